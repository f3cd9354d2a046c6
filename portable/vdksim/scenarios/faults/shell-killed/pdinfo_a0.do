signal KILL shell
