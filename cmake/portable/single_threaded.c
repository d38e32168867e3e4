/* The C++ runtime asks glibc 2.32 and later whether the process has one thread only, to save atomic
 * operations. A portable binary answers for itself: perhaps more. */
char __libc_single_threaded = 0;
