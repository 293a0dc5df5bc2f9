// Export macro of libzradplatform: public symbols are marked, everything else stays hidden.
#pragma once

#define ZRPLATFORM_EXPORT __attribute__((visibility("default")))
