signal SEGV
