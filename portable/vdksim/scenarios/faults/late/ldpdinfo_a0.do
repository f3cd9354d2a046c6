pass-first 1
exit 3
