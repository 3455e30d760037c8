message(FATAL_ERROR "This is the parent's")
