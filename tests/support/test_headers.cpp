// Nothing but a place for the precompiled headers of the tests to be made.
