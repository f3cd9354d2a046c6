close-stdout
