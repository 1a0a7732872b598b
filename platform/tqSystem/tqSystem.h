// Everything of the system layer in one include.
#pragma once

#include "tqSystem/LibInitCounter.h"
#include "tqSystem/SoftwareVersionInfoForStream.h"
#include "tqSystem/tqCancelInterface.h"
#include "tqSystem/tqDirUtils.h"
#include "tqSystem/tqIoDevice.h"
#include "tqSystem/tqIoDeviceFileStream.h"
#include "tqSystem/tqIoDeviceMemory.h"
#include "tqSystem/tqLog.h"
#include "tqSystem/tqProgressNotifierInterface.h"
#include "tqSystem/tqStringUtils.h"
#include "tqSystem/tqSystemUtils.h"
#include "tqSystem/tqTypes.h"
