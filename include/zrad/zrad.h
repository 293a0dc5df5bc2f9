// Every family of libzradutils in one include.
#pragma once

#include "crypto.h"
#include "files.h"
#include "image.h"
#include "json.h"
#include "log.h"
#include "remotedebug.h"
#include "shape.h"
#include "system.h"
#include "text.h"
#include "xml.h"
