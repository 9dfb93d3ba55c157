# a comment, wherever it stands
V D
V B
E s
#V X
V C
V A
V B
