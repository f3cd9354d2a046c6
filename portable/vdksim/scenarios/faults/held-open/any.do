spawn-holder 5
