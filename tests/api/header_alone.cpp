// The public header needs nothing before it, in C++98 too.
#include "sorvo_audio.h"
