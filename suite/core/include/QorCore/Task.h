#pragma once

#include <QorCore/Export.h>

namespace Qor::Core {

/// Work that is done once, on whatever thread.
class QOR_CORE_API Task {
public:
    virtual ~Task();

    virtual void Run() = 0;
};

} // namespace Qor::Core
