endless
