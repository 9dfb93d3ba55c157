# *******************************************************
# kestro 1.34 (VESK 1.0)
# 
# Transaction File Information --------------------------
#   Transaction File Name:                       db.g
#   Number of Input Transactions:                1
#   Number of Distinct Edge Labels:              0
#   Number of Distinct Vertex Labels:            0
#   Average Number of Edges In a Transaction:    0
#   Average Number of Vertices In a Transaction: 0
#   Max Number of Edges In a Transaction:        0
#   Max Number of Vertices In a Transaction:     0
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
# 
#   Largest Frequent Pattern Size:               0
#   Total Number of Frequent Patterns Found:     0
# 
# Timing Information ------------------------------------
#   Elapsed User CPU Time:                       T[sec]
# *******************************************************
