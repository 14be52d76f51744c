-- Runs the example of one text of the reference as it stands, with its own line numbers in errors. What it prints must
-- be the block of text that follows it, if there is one, else nothing.
-- zvk run tools/reference/example.lua docs/reference/NN-family.md
local markdown = dofile(arg[0]:match("^(.*/)") .. "markdown.lua")

local path = arg[1]
local code, expected
for _, block in ipairs(markdown.blocks(markdown.read(path))) do
  if block.language == "lua" then code = block end
  if block.language == "text" and code then expected = block.text end
end
if not code then markdown.fail("%s has no example; give it one in a block of lua", path) end

local printed = {}
local function note(...)
  local words = table.pack(...)
  for i = 1, words.n do words[i] = tostring(words[i]) end
  printed[#printed + 1] = table.concat(words, "\t") .. "\n"
end

local example, problem = load(("\n"):rep(code.line - 1) .. code.text, "@" .. path, "t",
                              setmetatable({print = note}, {__index = _G}))
if not example then markdown.fail("%s", problem) end
example()
if table.concat(printed) ~= (expected or "") then
  markdown.fail("the example of %s prints\n%sbut its text says\n%s", path, table.concat(printed), expected or "nothing")
end
