-- Makes docs/reference.md: every declaration is what the classes have registered, every explanation stands in a text of
-- docs/reference/. Fails if a member is explained nowhere or twice, or if a text explains what is not there.
-- zvk run tools/reference/page.lua make|check ZVK TEXTS PAGE
local markdown = dofile(arg[0]:match("^(.*/)") .. "markdown.lua")
local fail = markdown.fail
local action, zvk, texts, page = arg[1], arg[2], arg[3], arg[4]

-- --- the class tables ---

-- What 'zvk methods' prints of the plug-in's classes: lists by kind, in table order. A member has its class, name and
-- declaration, and the marks readOnly and assignable.
local function readMembers()
  local quoted = "'" .. zvk:gsub("'", "'\\''") .. "'"
  local pipe = assert(io.popen(quoted .. " methods"))
  local members = {Properties = {}, Methods = {}, ["Shared methods"] = {}, Events = {}, Constants = {}}
  local class, kind
  for line in pipe:lines() do
    local margin, text = line:match("^( *)(.*)$")
    if margin == "" then
      class = text
    elseif margin == "  " then
      kind = text
    elseif class:match("ZVK$") then
      local declaration, mark = text:match("^(.-) %(([%a -]+)%)$")
      if mark ~= "read-only" and mark ~= "can be assigned to" then declaration, mark = text, nil end
      table.insert(members[kind], {class = class, kind = kind, declaration = declaration,
                                   name = declaration:match("^%w+"), readOnly = mark == "read-only",
                                   assignable = mark == "can be assigned to"})
    end
  end
  if not pipe:close() then fail("%s methods failed; build it with ./run build", zvk) end
  return members
end

-- Notes that a text explains a member, which only one may do.
local function explain(member, path)
  if member.path then
    fail("%s is explained by %s and by %s; leave it to one", member.declaration, member.path, path)
  end
  member.path = path
end

local function requireExplained(members, path)
  for _, kind in ipairs{"Properties", "Constants", "Methods", "Shared methods", "Events"} do
    for _, member in ipairs(members[kind]) do
      if not member.path then
        fail("%s.%s is in the class tables and in no text of %s; name it in one", member.class, member.declaration,
             path)
      end
    end
  end
end

-- --- the texts ---

-- A text with its headings moved down so many levels.
local function demoted(text, levels)
  local lines = {}
  markdown.walk(text, function(line, _, fence)
    lines[#lines + 1] = line:match("^#+ ") and not fence and ("#"):rep(levels) .. line or line
  end)
  return table.concat(lines, "\n") .. "\n"
end

-- A text of docs/reference/, none of whose lines becomes an entry of a list because of how it was broken.
local function readText(path)
  local text = markdown.read(path)
  markdown.walk(text, function(line, number, fence)
    if not fence and (line:match("^[+*>] ") or line:match("^%d+[.)] ")) then
      fail("%s:%d begins like a list; break its lines elsewhere", path, number)
    end
  end)
  return text
end

-- What a line of a head covers: names with commas between them, each for all declarations of the name, or one whole
-- declaration.
local function entriesIn(value)
  if value:find("(", 1, true) then return {value} end
  local entries = {}
  for name in value:gmatch("[^, ]+") do entries[#entries + 1] = name end
  return entries
end

-- The family that a text explains: its title, group, the members that it covers, and what it says.
local function readFamily(path, members)
  local family = {path = path, members = {}}
  local title, head, body = readText(path):match("^# ([^\n]+)\n\n<!%-%-\n(.-)%-%->\n\n(.*)$")
  if not title then fail("%s does not begin with a title and a comment that says group and covers", path) end
  family.title, family.body = title, body
  for line in head:gmatch("[^\n]+") do
    local key, value = line:match("^(%w+): (.+)$")
    if key == "group" then
      family.group = value
    elseif key == "covers" then
      for _, entry in ipairs(entriesIn(value)) do
        local before = #family.members
        for _, kind in ipairs{"Methods", "Shared methods", "Events"} do
          for _, member in ipairs(members[kind]) do
            if member.name == entry or member.declaration == entry then
              explain(member, path)
              table.insert(family.members, member)
            end
          end
        end
        if #family.members == before then
          fail("%s covers %s, which no class has; 'zvk methods' tells what there is", path, entry)
        end
      end
    else
      fail("%s says '%s' in its head; there are group and covers", path, line)
    end
  end
  if not family.group then fail("%s says no group in its head", path) end

  local examples = {}
  for _, block in ipairs(markdown.blocks(body)) do
    if block.language == "lua" then examples[#examples + 1] = block end
  end
  if #examples ~= 1 then fail("%s has %d examples; there is one for each family", path, #examples) end
  if #examples[1] < 3 or #examples[1] > 12 then
    fail("the example of %s has %d lines; it should have 3 to 12", path, #examples[1])
  end
  return family
end

-- A text with each list of "- `Name`: words" replaced by what makeTable gives for its members and words. Of an image
-- format the words may be missing, since its image tells what it is.
local function withTables(path, members, makeTable)
  local byName, out, items = {}, {}, {}
  for _, member in ipairs(members) do byName[member.name] = member end
  local function flush()
    if #items > 0 then table.move(makeTable(items), 1, #items + 2, #out + 1, out) end
    items = {}
  end
  for _, line in ipairs(markdown.lines(readText(path))) do
    local name, words = line:match("^%- `(%w+)`:? ?(.*)$")
    if name then
      local member = byName[name]
      if not member then fail("%s explains %s, which no class has; 'zvk methods' tells what there is", path, name) end
      if words == "" and not name:match("^ImageFormat") then fail("%s names %s and tells nothing of it", path, name) end
      explain(member, path)
      items[#items + 1] = {member = member, words = words}
    else
      flush()
      out[#out + 1] = line
    end
  end
  flush()
  return demoted(table.concat(out, "\n") .. "\n", 1)
end

local function tableOf(heads, rows)
  local lines = {"| " .. table.concat(heads, " | ") .. " |", ("|---"):rep(#heads) .. "|"}
  for _, row in ipairs(rows) do lines[#lines + 1] = "| " .. table.concat(row, " | ") .. " |" end
  return lines
end

local function propertyTable(items)
  local rows = {}
  for i, item in ipairs(items) do
    rows[i] = {"`" .. item.member.declaration .. "`", item.member.readOnly and "read" or "read, write", item.words}
  end
  return tableOf({"Property", "Use", "Meaning"}, rows)
end

-- An image of that format, and the bytes of its pixel in their order: channels by their letters, X for bytes of none.
local function pixelBytes(format)
  local image = PictureZVK(1, 1, format)
  if image.ChannelCount == 0 then return image, "raw" end
  local bytes = {}
  for i = 1, image.PixelSize do bytes[i] = "X" end
  for _, channel in ipairs{"Red", "Green", "Blue", "Gray", "Alpha", "Cyan", "Magenta", "Yellow", "Black"} do
    if image["Has" .. channel] then
      local letter = ({Gray = "Gray", Black = "K"})[channel] or channel:sub(1, 1)
      for byte = 1, image.BitsPerComponent // 8 do bytes[image[channel .. "Offset"] + byte] = letter end
    end
  end
  return image, table.concat(bytes, " ")
end

local function constantTable(items)
  local rows, areFormats = {}, items[1].words == ""
  for i, item in ipairs(items) do
    local name = item.member.name
    local value = PictureZVK[name]
    if areFormats then
      local image, bytes = pixelBytes(value)
      rows[i] = {"`" .. name .. "`", value, image.PixelSize, bytes, '"' .. image.ImageFormatString .. '"'}
    else
      rows[i] = {"`" .. name .. "`", value, item.words}
    end
  end
  return tableOf(areFormats and {"Constant", "Value", "Bytes", "Pixel", "`ImageFormatString`"} or
                 {"Constant", "Value", "Meaning"}, rows)
end

-- --- the page ---

local function link(title) return "[" .. title .. "](#" .. markdown.anchor(title) .. ")" end

-- The declarations of a family, in a block for each kind.
local function declarations(family)
  local out, kind = {}, nil
  local captions = {["Shared methods"] = "Shared by the class `%s`:", Events = "Event of `%s`:"}
  for _, member in ipairs(family.members) do
    if kind ~= member.class .. member.kind then
      if kind then out[#out + 1] = "```\n" end
      kind = member.class .. member.kind
      if captions[member.kind] then out[#out + 1] = captions[member.kind]:format(member.class) .. "\n" end
      out[#out + 1] = "```"
    end
    out[#out + 1] = member.declaration .. (member.assignable and "   // can be assigned to" or "")
  end
  out[#out + 1] = "```\n"
  return table.concat(out, "\n")
end

local function familyParts(families)
  local out, group = {}, nil
  for _, family in ipairs(families) do
    if family.group ~= group then
      group = family.group
      out[#out + 1] = "## " .. group .. "\n"
    end
    out[#out + 1] = "### " .. family.title .. "\n"
    out[#out + 1] = declarations(family)
    out[#out + 1] = demoted(family.body, 2)
  end
  return table.concat(out, "\n")
end

-- One line for each part, with what is in it behind it.
local function contents(text)
  local lines = {}
  for _, heading in ipairs(markdown.headings(text)) do
    if heading.level == 2 then
      lines[#lines + 1] = "- " .. link(heading.title)
    elseif heading.level == 3 then
      lines[#lines] = lines[#lines] .. (lines[#lines]:find("): ", 1, true) and ", " or ": ") .. link(heading.title)
    end
  end
  return "## Contents\n\n" .. table.concat(lines, "\n") .. "\n"
end

local function nameIndex(families)
  local titles, names = {}, {}
  for _, family in ipairs(families) do
    for _, member in ipairs(family.members) do
      local name = member.name
      if not titles[name] then
        titles[name] = {}
        names[#names + 1] = name
      end
      if not titles[name][family.title] then
        titles[name][family.title] = true
        table.insert(titles[name], family.title)
      end
    end
  end
  table.sort(names, function(a, b) return a:lower() < b:lower() end)
  local rows = {}
  for i, name in ipairs(names) do
    local links = {}
    for j, title in ipairs(titles[name]) do links[j] = link(title) end
    rows[i] = {"`" .. name .. "`", table.concat(links, ", ")}
  end
  return "## Methods from A to Z\n\n" .. table.concat(tableOf({"Name", "Explained in"}, rows), "\n") .. "\n"
end

local function makePage()
  local members = readMembers()
  local introduction, rest = readText(texts .. "/introduction.md"):match("^(.-\n)(## .*)$")
  if not introduction then fail("%s/introduction.md has no title and no part", texts) end
  local families = {}
  local folder = FolderItem(texts)
  for i = 1, folder.Count do
    local name = folder:Item(i).Name
    if name:match("^%d+.*%.md$") then families[#families + 1] = readFamily(texts .. "/" .. name, members) end
  end
  local properties = withTables(texts .. "/properties.md", members.Properties, propertyTable)
  local constants = withTables(texts .. "/constants.md", members.Constants, constantTable)
  requireExplained(members, texts)

  local body = table.concat({rest, properties, constants, familyParts(families), nameIndex(families)}, "\n")
  local note = "<!-- Made by './run docs' from the class tables and the texts in docs/reference/; change those. -->\n\n"
  local text = note .. introduction .. contents(body) .. "\n" .. body
  local anchors = markdown.anchors(text, page)
  for _, target in ipairs(markdown.targets(text)) do
    if target:match("^#") and not anchors[target:sub(2)] then
      fail("there is a link to %s, but no such heading", target)
    end
  end
  return text
end

local text = makePage()
if action == "make" then
  local file, problem = io.open(page .. ".part", "wb")
  if not file then fail("%s", problem) end
  assert(file:write(text))
  assert(file:close())
  assert(os.rename(page .. ".part", page))
elseif text ~= markdown.read(page) then
  local is, should = markdown.lines(markdown.read(page)), markdown.lines(text)
  local number = 1
  while is[number] == should[number] do number = number + 1 end
  fail("%s is not what the class tables and %s give, from line %d on; './run docs' makes it anew", page, texts, number)
end
