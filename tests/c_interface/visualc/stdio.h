/* The little that the example needs of a C library that Debian does not have for Visual C++'s kind
 * of program. */
#define NULL ((void*)0)
int printf(const char* format, ...);
