t
v 0 A
v 1 B
v 2 C
u 0 1 s
u 1 2 s
t
v 0 B
v 1 C
v 2 D
u 0 1 s
u 1 2 s
t
v 0 A
v 1 B
v 2 C
u 0 1 s
u 1 2 s
t
v 0 B
v 1 C
v 2 D
u 0 1 s
u 1 2 s
