sleep 3600   # an hour, unless somebody loses patience
