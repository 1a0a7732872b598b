#include "svg/io/tqCoreSvgIODriver.h"

namespace tq::svg {

tqCoreSvgIODriver::~tqCoreSvgIODriver() = default;

}  // namespace tq::svg
