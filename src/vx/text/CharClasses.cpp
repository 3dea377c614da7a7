#include "vx/text/CharClasses.h"

namespace vx::chars {

#include "vx/text/CharClassTables.inc"

}  // namespace vx::chars
