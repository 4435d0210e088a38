local s = "abcdefghij"
while #s < 10000000 do
  s = s .. s
end
s = s .. "needle"
local found = 0
for k = 0, 9 do
  found = found + (string.find(s, "needle", k + 1, true) - 1)
end
print(found)
