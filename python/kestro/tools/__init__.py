"""The command kestro-tools: kestro without a line of Python."""
