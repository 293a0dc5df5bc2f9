// The platform stand-in as one include.
#pragma once

#include "array.h"
#include "error.h"
#include "geometry.h"
#include "memory.h"
#include "module.h"
#include "raster.h"
#include "rxobject.h"
#include "stream.h"
#include "strings.h"
#include "wildcard.h"
