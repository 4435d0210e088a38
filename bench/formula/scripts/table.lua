local parts = {}
for i = 0, 99999 do
  parts[#parts + 1] = tostring(i) .. "," .. tostring(i * 2) .. "," .. tostring(i % 7) .. "\n"
end
local t = table.concat(parts)
local names = {"a", "b", "c"}
local cols = {}
for _, name in ipairs(names) do cols[name] = {} end
for line in t:gmatch("[^\n]+") do
  local c = 1
  for cell in line:gmatch("[^,]+") do
    local col = cols[names[c]]
    col[#col + 1] = cell
    c = c + 1
  end
end
local s = 0
for _, x in ipairs(cols["b"]) do s = s + tonumber(x) end
print(s)
