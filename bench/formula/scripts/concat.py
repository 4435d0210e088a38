parts = []
i = 0
while i < 100000:
    parts.append("ab")
    i += 1
s = "".join(parts)
print(len(s))
