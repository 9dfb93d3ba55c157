t
v 0 A
v 1 B
v 2 C
v 3 D
v 4 E
u 0 1 s
u 1 2 s
u 2 3 s
u 3 4 s
t
v 0 E
v 1 D
v 2 C
v 3 B
v 4 A
u 0 1 s
u 1 2 s
u 2 3 s
u 3 4 s
