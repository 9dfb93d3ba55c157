"""Mining on a cluster, in two passes."""
