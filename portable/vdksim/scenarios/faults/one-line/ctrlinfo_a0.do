bytes 64M   # no line feed anywhere
