s = "abcdefghij"
while len(s) < 10000000:
    s += s
s += "needle"
found = 0
k = 0
while k < 10:
    found += s.find("needle", k)
    k += 1
print(found)
