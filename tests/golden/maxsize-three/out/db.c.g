t # 3-0, 0
v 0 B
v 1 C
v 2 A
v 3 D
u 0 1 s
u 0 2 s
u 1 3 s
t # 3-1, 0
v 0 C
v 1 D
v 2 B
v 3 E
u 0 1 s
u 0 2 s
u 1 3 s
