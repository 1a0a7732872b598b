#include "svg/model/ItemInterface.h"

namespace tq::svg {

ItemInterface::~ItemInterface() = default;

}  // namespace tq::svg
