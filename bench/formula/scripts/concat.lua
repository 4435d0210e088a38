local parts = {}
local i = 0
while i < 100000 do
  parts[#parts + 1] = "ab"
  i = i + 1
end
local s = table.concat(parts)
print(#s)
