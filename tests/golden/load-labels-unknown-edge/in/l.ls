E t
E d
V A
V B
V C
V D
