stderr
truncate 0
exit 127
