j = 0
total = 0
count = 0
while j < 10:
    i = 0
    while i < 1000000:
        total = total + i
        count += 1
        i += 1
    j += 1
print(count, total)
