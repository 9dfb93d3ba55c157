t # 3-0, 0
v 0 B
v 1 C
v 2 A
v 3 D
u 0 1 s
u 0 2 s
u 1 3 s
