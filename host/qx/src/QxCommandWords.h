#pragma once

#include <QStringList>

/// The words that the console offers to complete a command.
namespace QxCommandWords {

/// Commands and objects for the first word; behind an object what it understands.
QStringList candidates(const QStringList& wordsBefore);

} // namespace QxCommandWords
