// The one source of the target whose precompiled headers the tests share.
