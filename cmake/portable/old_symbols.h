/* Included before every file of a portable binary. Binds functions to the versions of their symbols
 * that every glibc has; they differ from the newer ones in how errors are reported through errno
 * alone. */
#if defined(__x86_64__)
#define SORVO_OLD_SYMBOL(name) __asm__(".symver " #name "," #name "@GLIBC_2.2.5");
#elif defined(__aarch64__)
#define SORVO_OLD_SYMBOL(name) __asm__(".symver " #name "," #name "@GLIBC_2.17");
#else
#define SORVO_OLD_SYMBOL(name)
#endif
SORVO_OLD_SYMBOL(exp)
SORVO_OLD_SYMBOL(log)
SORVO_OLD_SYMBOL(log2)
SORVO_OLD_SYMBOL(pow)
