-- Makes tavel-clipboard-protocol(7) of its frame, docs/protocol.md and docs/formats.md, which pandoc reads as one
-- document, in this order.

-- A page has no room for more columns. The further ones of the table of formats are not for parents' developers.
local most_columns = 3

local line_length = 70 -- in pandoc's tables for pages, where a column's width is a part of it
local gap = 3

local function cut(list)
  for index = #list, most_columns + 1, -1 do
    table.remove(list, index)
  end
  return list
end

-- The longest cell of a column, in bytes, but not more than `limit`.
local function length_of(column, rows, limit)
  local longest = 0
  for _, row in ipairs(rows) do
    longest = math.max(longest, #pandoc.utils.stringify(row[column]))
  end
  return math.min(longest, limit)
end

-- Gives the last column, which explains, all the room that the others can spare.
local function fit(wide)
  local simple = pandoc.utils.to_simple_table(wide)
  cut(simple.headers)
  cut(simple.aligns)
  simple.rows = simple.rows:map(cut)
  local count, room = #simple.headers, line_length - gap * (#simple.headers - 1)
  local longest = count == 2 and 34 or 28
  simple.widths = {}
  for column = 1, count - 1 do
    local length = length_of(column, simple.rows, longest)
    simple.widths[column] = length / line_length
    room = room - length
  end
  simple.widths[count] = room / line_length
  return pandoc.utils.from_simple_table(simple)
end

-- Links lead nowhere in a page.
local function name_document(link)
  local document = link.target:match("^([%w-]+)%.md")
  if not document then
    return nil
  end
  local place = document == "formats" and " (below)" or " (docs/" .. document .. ".md of the sources)"
  return link.content .. { pandoc.Str(place) }
end

-- The chapters below a document's title become chapters of the page.
local function raise(header)
  local title = pandoc.utils.stringify(header)
  if header.level == 1 then
    return title == "The protocol" and pandoc.Header(1, "DESCRIPTION") or pandoc.Header(1, title:upper())
  end
  header.level = header.level - 1
  return header.level == 1 and pandoc.Header(1, title:upper()) or header
end

-- What only the project's own developers need is left out.
local function without_instructions(blocks)
  local kept, keeping = pandoc.List(), true
  for _, block in ipairs(blocks) do
    if block.t == "Header" and block.level <= 2 then
      keeping = pandoc.utils.stringify(block) ~= "Adding a format"
    end
    if keeping then
      kept:insert(block)
    end
  end
  return kept
end

function Pandoc(document)
  document.blocks = without_instructions(document.blocks)
  return document:walk({ Header = raise, Link = name_document, Table = fit })
end
