t
v 0 A
v 1 B
v 2 C
v 3 B
v 4 C
v 5 D
u 0 1 s
u 1 2 s
u 3 4 s
u 4 5 s
t
v 0 A
v 1 B
v 2 C
v 3 B
v 4 C
v 5 D
u 0 1 s
u 1 2 s
u 3 4 s
u 4 5 s
