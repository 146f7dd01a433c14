-- Links to pages of the guide lead to their HTML; the first heading is the page's title.
function Link(link)
  link.target = link.target:gsub("^README%.md", "index.md"):gsub("^([%w-]+)%.md", "%1.html")
  return link
end

function Pandoc(document)
  for _, block in ipairs(document.blocks) do
    if block.t == "Header" and block.level == 1 then
      document.meta.pagetitle = pandoc.utils.stringify(block.content)
      break
    end
  end
  return document
end
