#include "tqSystem/tqIoDevice.h"

#include "tqSystem/tqCancelInterface.h"
#include "tqSystem/tqProgressNotifierInterface.h"

tqIoDevice::~tqIoDevice() = default;
tqProgressNotifierInterface::~tqProgressNotifierInterface() = default;
tqCancelInterface::~tqCancelInterface() = default;
