#pragma once
// The schema object: made with a parent node and destroyed, with no behaviour of its own yet.
#include "vx/dom/XmlBaseObject.h"

namespace vx {

class CXsd {
  public:
    explicit CXsd(CXmlBaseObject* parent);
    virtual ~CXsd();
    CXsd(const CXsd&) = delete;
    CXsd& operator=(const CXsd&) = delete;
};

}  // namespace vx
