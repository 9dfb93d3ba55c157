% head
# head
 	T first
	u  -7   +5	s  more
  V 5 A
v	-7	B trailing
D 007 -7 s
v 7 C
v 5 D
t
v 1 C
v 2 B
v 3 A
E 2 3 s
d 2 1 s