# *******************************************************
# kestro 1.34 (VESK 1.0)
# 
# Transaction File Information --------------------------
#   Transaction File Name:                       db.g
#   Number of Input Transactions:                1
#   Number of Distinct Edge Labels:              1
#   Number of Distinct Vertex Labels:            4
#   Average Number of Edges In a Transaction:    2
#   Average Number of Vertices In a Transaction: 4
#   Max Number of Edges In a Transaction:        2
#   Max Number of Vertices In a Transaction:     4
# 
# Options -----------------------------------------------
#   Min Output Pattern Size:                     1
#   Max Output Pattern Size:                     2147483647(INT_MAX)
#   Min Support Threshold:                       100.0% (1 transaction)
#   Generate Only Maximal Patterns:              No
#   Generate PC-List:                            No
#   Generate TID-List:                           No
# 
# Outputs -----------------------------------------------
#   Frequent Pattern File:                       db.fp
# 
t # 1-0, 1
v 0 A
v 1 B
u 0 1 s
t # 1-1, 1
v 0 B
v 1 D
u 0 1 s
t # 2-0, 1
v 0 B
v 1 A
v 2 D
u 0 1 s
u 0 2 s
#   Size Candidates Frequent Patterns 
#   1               2                 
#   2               1                 
# 
#   Largest Frequent Pattern Size:               2
#   Total Number of Frequent Patterns Found:     3
# 
# Timing Information ------------------------------------
#   Elapsed User CPU Time:                       T[sec]
# *******************************************************
