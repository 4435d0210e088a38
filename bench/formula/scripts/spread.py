import math
a = []
i = 0
while i < 1000000:
    a.append(i * 0.000001)
    i += 1
b = [math.sqrt(x * x + 1) for x in a]
print(sum(b))
