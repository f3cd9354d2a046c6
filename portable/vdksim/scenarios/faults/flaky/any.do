fail-first 2 1
