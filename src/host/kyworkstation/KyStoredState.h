#pragma once

#include <QtCore/QByteArray>

/// States of widgets, such as that of a splitter, which outlive the process: in the user's settings, below
/// "GUI.State.". Without an OvRegistry nothing is kept.
namespace KyStoredState {

/// Empty when nothing is stored.
QByteArray read(const char* inName);
void write(const char* inName, const QByteArray& inState);

} // namespace KyStoredState
