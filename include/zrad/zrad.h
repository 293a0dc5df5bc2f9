// Every family of libzradutils in one include.
#pragma once

#include "crypto.h"
#include "files.h"
#include "json.h"
#include "log.h"
#include "shape.h"
#include "system.h"
#include "text.h"
