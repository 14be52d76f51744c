-- Checks that what pages link to is there: files beside them, and headings in them and in other pages.
-- zvk run tools/reference/links.lua PAGE.md ...
local markdown = dofile(arg[0]:match("^(.*/)") .. "markdown.lua")

local known = {}
local function anchorsOf(page)
  known[page] = known[page] or markdown.anchors(markdown.read(page), page)
  return known[page]
end

for _, page in ipairs(arg) do
  local folder = page:match("^(.*/)") or ""
  for _, target in ipairs(markdown.targets(markdown.read(page))) do
    if not target:match("^%a+:") then
      local file, anchor = target:match("^([^#]*)#?(.*)$")
      local other = file == "" and page or folder .. file
      if not FolderItem(other).Exists then markdown.fail("%s links to %s, which is not there", page, target) end
      if anchor ~= "" and not anchorsOf(other)[anchor] then
        markdown.fail("%s links to %s, but no heading of %s is called so", page, target, other)
      end
    end
  end
end
