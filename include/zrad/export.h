// Export macro of libzradutils: public symbols are marked, everything else stays hidden.
#pragma once

#define ZRAD_EXPORT __attribute__((visibility("default")))
