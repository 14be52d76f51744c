-- Runs all blocks of Lua of a page, one after the other and with the globals of those before, with the page's own line
-- numbers in errors.
-- zvk run tools/reference/all_examples.lua PAGE.md
local markdown = dofile(arg[0]:match("^(.*/)") .. "markdown.lua")

local path = arg[1]
local code, line = {}, 1
for _, block in ipairs(markdown.blocks(markdown.read(path))) do
  if block.language == "lua" then
    code[#code + 1] = ("\n"):rep(block.line - line) .. block.text
    line = block.line + select(2, block.text:gsub("\n", ""))
  end
end
if #code == 0 then markdown.fail("%s has no examples", path) end
local examples, problem = load(table.concat(code), "@" .. path, "t", setmetatable({}, {__index = _G}))
if not examples then markdown.fail("%s", problem) end
examples()
