t # 0
v 0 A
v 1 B
v 2 C
v 3 D
u 0 1 s
u 2 3 s
t # 1
v 0 D
v 1 B
v 2 C
v 3 A
u 0 2 s
u 3 1 s
