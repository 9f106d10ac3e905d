# The public headers as the reference reads them: the comment on top of each is of the file, an
# enumeration is one in plain C, and what only the compiler checks is not there.
1,/^\/\*$/s|^/\*$|/** @file|
s/^ORB_EXTENSION \(enum [A-Za-z0-9_]*\) ORB_ENUM_INT32/\1/
s/^typedef ORB_ENUM_TYPE.*//
/^#ifdef ORB_STATIC_ASSERT/,/^#endif .. ORB_/{
/^#endif .. ORB_/!s/.*//
}
