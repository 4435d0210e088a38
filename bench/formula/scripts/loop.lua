local j, total, count = 0, 0, 0
while j < 10 do
  local i = 0
  while i < 1000000 do
    total = total + i
    count = count + 1
    i = i + 1
  end
  j = j + 1
end
print(count, total)
