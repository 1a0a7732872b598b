// Receives progress of long operations; the library accepts one and may not call it.
#pragma once

#include "tqSystem/tqSystemExport.h"

class TQSYSTEM_EXPORT tqProgressNotifierInterface {
public:
    virtual ~tqProgressNotifierInterface();
};
