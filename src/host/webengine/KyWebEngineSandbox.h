#pragma once

#include <QtCore/QString>

/// Whether pages can be shown by this user: the engine ends the process of a superuser who has not switched
/// its sandbox off.
class KyWebEngineSandbox
{
public:
    KyWebEngineSandbox() = delete;

    /// What keeps the engine from starting, for the log; empty when nothing does.
    static QString obstacle();
};
