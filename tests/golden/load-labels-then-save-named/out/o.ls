# 1 edge labels, 4 vertex labels
E s
V A
V B
V C
V D
