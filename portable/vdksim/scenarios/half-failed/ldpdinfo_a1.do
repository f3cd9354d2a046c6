# the text breaks off in the middle of the second drive's lines
truncate 400
exit 3
