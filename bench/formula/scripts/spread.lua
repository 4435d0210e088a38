local a = {}
local i = 0
while i < 1000000 do
  a[#a + 1] = i * 0.000001
  i = i + 1
end
local sqrt = math.sqrt
local b = {}
for k = 1, #a do local x = a[k]; b[k] = sqrt(x * x + 1) end
local s = 0
for k = 1, #b do s = s + b[k] end
print(s)
