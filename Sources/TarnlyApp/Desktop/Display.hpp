#pragma once

#include <QByteArray>
#include <QString>

namespace tarnly {

// What the system tells a program of the display where the person is, and of that person's leave to bring up
// a window there. For the main thread.

/// Whether there is one: without it, Qt ends the program.
bool hasDisplay();

/// Tells the displays of a person apart, however they are spelt, by letters, digits and dashes; may be empty.
QString displayName();

/// The desktop's leave for this start of the program to bring up a window; empty where it gave none.
QByteArray activationToken();

/// Has the next window that comes up make use of `token`.
void useActivationToken(const QByteArray& token);

} // namespace tarnly
