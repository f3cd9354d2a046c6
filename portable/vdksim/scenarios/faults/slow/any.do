sleep 0.67
