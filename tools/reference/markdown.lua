-- What the scripts beside this one know of files and of Markdown. An error is one line, for whoever runs them to read.
local markdown = {}

function markdown.fail(...) error(string.format(...), 0) end

function markdown.read(path)
  local file, problem = io.open(path, "rb")
  if not file then markdown.fail("%s; run this in the folder of the project", problem) end
  local text = file:read("a")
  file:close()
  return text
end

function markdown.lines(text)
  local lines = {}
  for line in (text:sub(-1) == "\n" and text or text .. "\n"):gmatch("(.-)\n") do lines[#lines + 1] = line end
  return lines
end

-- Calls each(line, number, fence) for every line; fence is the language of the block of code that the line is in, its
-- first and last line included, and nil outside.
function markdown.walk(text, each)
  local fence
  for number, line in ipairs(markdown.lines(text)) do
    local mark = line:match("^```(%w*)")
    local inside = fence
    if mark and not fence then
      fence, inside = mark, mark
    elseif mark then
      fence = nil
    end
    each(line, number, inside)
  end
end

-- The blocks of code: language, number of the line behind the first fence, and the text.
function markdown.blocks(text)
  local blocks, open = {}, nil
  markdown.walk(text, function(line, number, fence)
    if not fence then return end
    if line:match("^```") then
      if open then
        open.text = table.concat(open, "\n") .. "\n"
        open = nil
      else
        open = {language = fence, line = number + 1}
        blocks[#blocks + 1] = open
      end
    else
      open[#open + 1] = line
    end
  end)
  return blocks
end

-- The headings: level, title.
function markdown.headings(text)
  local headings = {}
  markdown.walk(text, function(line, _, fence)
    local marks, title = line:match("^(#+) (.*)$")
    if marks and not fence then headings[#headings + 1] = {level = #marks, title = title} end
  end)
  return headings
end

-- The anchor that viewers give to a heading.
function markdown.anchor(title) return (title:lower():gsub("[^%w _-]", ""):gsub(" ", "-")) end

function markdown.anchors(text, name)
  local anchors = {}
  for _, heading in ipairs(markdown.headings(text)) do
    local anchor = markdown.anchor(heading.title)
    if anchors[anchor] then markdown.fail("%s has two headings '%s'; rename one of them", name, heading.title) end
    anchors[anchor] = true
  end
  return anchors
end

-- The targets of all links and pictures outside of code.
function markdown.targets(text)
  local targets = {}
  markdown.walk(text, function(line, _, fence)
    if fence then return end
    for target in line:gsub("`[^`]*`", ""):gmatch("%]%(([^)%s]+)%)") do targets[#targets + 1] = target end
  end)
  return targets
end

return markdown
