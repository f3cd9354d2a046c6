bytes 64M
