t
v 0 A
v 1 B
v 2 C
v 3 D
u 0 1 s
u 1 2 s
u 2 3 s
t
v 0 A
v 1 B
v 2 C
v 3 D
u 0 1 s
u 1 2 s
u 2 3 s
