a = []
i = 0
while i < 1000000:
    a.append(i)
    i += 1
print(sum(a))
