# *******************************************************
# kestro 1.34 (VESK 1.0)
# 
# Transaction File Information --------------------------
#   Transaction File Name:                       db.g
#   Number of Input Transactions:                4
#   Number of Distinct Edge Labels:              1
#   Number of Distinct Vertex Labels:            4
#   Average Number of Edges In a Transaction:    1
#   Average Number of Vertices In a Transaction: 2
#   Max Number of Edges In a Transaction:        1
#   Max Number of Vertices In a Transaction:     2
# 
# Options -----------------------------------------------
#   Min Output Pattern Size:                     1
#   Max Output Pattern Size:                     2147483647(INT_MAX)
#   Min Support Threshold:                       inf% (4 transactions)
#   Generate Only Maximal Patterns:              No
#   Generate PC-List:                            No
#   Generate TID-List:                           Yes
# 
# Outputs -----------------------------------------------
#   Frequent Pattern File:                       db.fp
#   TID-List File:                               db.tid
# 
# 
#   Largest Frequent Pattern Size:               0
#   Total Number of Frequent Patterns Found:     0
# 
# Timing Information ------------------------------------
#   Elapsed User CPU Time:                       T[sec]
# *******************************************************
