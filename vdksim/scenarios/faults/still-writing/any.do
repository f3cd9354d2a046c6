spawn-writer 5
