E s
V B
V A
V C
