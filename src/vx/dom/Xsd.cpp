#include "vx/dom/Xsd.h"

namespace vx {

CXsd::CXsd(CXmlBaseObject* /*parent*/) {}

CXsd::~CXsd() = default;

}  // namespace vx
