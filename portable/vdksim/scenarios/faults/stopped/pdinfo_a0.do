stop
