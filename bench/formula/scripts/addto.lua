local a = {}
local i = 0
while i < 1000000 do
  a[#a + 1] = i
  i = i + 1
end
local s = 0
for k = 1, #a do s = s + a[k] end
print(s)
