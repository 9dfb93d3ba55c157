# *******************************************************
# kestro 1.34 (VESK 1.0)
# 
# Transaction File Information --------------------------
#   Transaction File Name:                       folder
#   Number of Input Transactions:                0
#   Number of Distinct Edge Labels:              0
#   Number of Distinct Vertex Labels:            0
#   Average Number of Edges In a Transaction:    -nan
#   Average Number of Vertices In a Transaction: -nan
#   Max Number of Edges In a Transaction:        0
#   Max Number of Vertices In a Transaction:     0
# 
# Options -----------------------------------------------
#   Min Output Pattern Size:                     1
#   Max Output Pattern Size:                     2147483647(INT_MAX)
#   Min Support Threshold:                       5.0% (1 transaction)
#   Generate Only Maximal Patterns:              No
#   Generate PC-List:                            No
#   Generate TID-List:                           Yes
# 
# Outputs -----------------------------------------------
#   Frequent Pattern File:                       folder.fp
#   TID-List File:                               folder.tid
# 
# 
#   Largest Frequent Pattern Size:               0
#   Total Number of Frequent Patterns Found:     0
# 
# Timing Information ------------------------------------
#   Elapsed User CPU Time:                       T[sec]
# *******************************************************
