# *******************************************************
# kestro 1.34 (VESK 1.0)
# 
# Transaction File Information --------------------------
#   Transaction File Name:                       db.g
#   Number of Input Transactions:                2
#   Number of Distinct Edge Labels:              1
#   Number of Distinct Vertex Labels:            4
#   Average Number of Edges In a Transaction:    3
#   Average Number of Vertices In a Transaction: 4
#   Max Number of Edges In a Transaction:        3
#   Max Number of Vertices In a Transaction:     4
# 
# Options -----------------------------------------------
#   Min Output Pattern Size:                     2
#   Max Output Pattern Size:                     2
#   Min Support Threshold:                       5.0% (1 transaction)
#   Generate Only Maximal Patterns:              No
#   Generate PC-List:                            No
#   Generate TID-List:                           No
# 
# Outputs -----------------------------------------------
#   Frequent Pattern File:                       db.fp
# 
t # 2-0, 2
v 0 B
v 1 A
v 2 C
u 0 1 s
u 0 2 s
t # 2-1, 2
v 0 C
v 1 B
v 2 D
u 0 1 s
u 0 2 s
#   Size Candidates Frequent Patterns 
#   2               2                 
# 
#   Largest Frequent Pattern Size:               2
#   Total Number of Frequent Patterns Found:     2
# 
# Timing Information ------------------------------------
#   Elapsed User CPU Time:                       T[sec]
# *******************************************************
