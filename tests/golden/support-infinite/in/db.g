t
v 0 A
v 1 B
u 0 1 s
t
v 0 C
v 1 D
u 0 1 s
t
v 0 A
v 1 B
u 0 1 s
t
v 0 A
v 1 B
u 0 1 s
