"""What the C++ library refuses."""


class FieldError(ValueError):
    """A value is not in its range, a tolerance cannot be kept, or there is too little memory.

    The message says which, and what to do.
    """
