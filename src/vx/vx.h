#pragma once
// Everything a host of vx uses.
#include "vx/diag/ParseError.h"
#include "vx/platform/CodeConv.h"
#include "vx/platform/File.h"
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"
#include "vx/platform/Package.h"
#include "vx/platform/Path.h"
#include "vx/text/CharClasses.h"
#include "vx/text/CommonFunc.h"
#include "vx/text/SmallVector.h"
#include "vx/text/StringBuffer.h"
#include "vx/text/VelStr.h"
