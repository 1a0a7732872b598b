// Lets a host stop a long operation.
#pragma once

#include "tqSystem/tqSystemExport.h"

class TQSYSTEM_EXPORT tqCancelInterface {
public:
    virtual ~tqCancelInterface();
    virtual bool isCancelled() const = 0;
};
