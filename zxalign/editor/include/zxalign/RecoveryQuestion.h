#pragma once

class AlignRecovery;
class QString;

/// Asks in the main window whether an alignment that was not saved is to be restored: "Restore", "Discard",
/// or neither by closing the question, which leaves it for the next time. Returns at once; the answer comes
/// through the event loop. False when there is no window to ask in. For AlignRecovery::setQuestion().
bool askToRestore(AlignRecovery& recovery, const QString& text);

/// True while the main window is shown. For AlignRecovery::setWanted().
bool isAnybodyAtTheWindow();
