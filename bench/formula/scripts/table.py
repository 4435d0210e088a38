parts = []
i = 0
while i < 100000:
    parts.append(str(i) + "," + str(i * 2) + "," + str(i % 7) + "\n")
    i += 1
t = "".join(parts)
names = ["a", "b", "c"]
cols = {}
for name in names:
    cols[name] = []
for line in t.split("\n"):
    if not line:
        continue
    cells = line.split(",")
    for c in range(3):
        cols[names[c]].append(cells[c])
print(sum(float(x) for x in cols["b"]))
