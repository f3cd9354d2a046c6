marker -aAll   # and exit status 1 with it
