#pragma once

#include <QtCore/qglobal.h>

/// Marks what other modules may use; everything else stays inside the library.
#if defined(KYSCRIPT_BUILD)
#define KYSCRIPT_EXPORT Q_DECL_EXPORT
#else
#define KYSCRIPT_EXPORT Q_DECL_IMPORT
#endif
