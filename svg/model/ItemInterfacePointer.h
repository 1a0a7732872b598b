// The shared pointer through which the library hands out items.
#pragma once

#include <memory>

namespace tq::svg {

// The standard shared pointer itself, so that an item handed out goes straight into a
// Node's child list. It may hold a control block with a null object: test the object.
template <class T>
using ItemInterfacePointer = std::shared_ptr<T>;

}  // namespace tq::svg
