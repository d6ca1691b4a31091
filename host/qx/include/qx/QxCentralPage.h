#pragma once

class ZxObject;

/// A page of the main window's centre that may hold unsaved work. A page widget derives from it as well; the
/// main window asks every page of its stack that does before it closes.
class QxCentralPage {
public:
  virtual ~QxCentralPage() = default;
  /// Asks the user, if need be, what becomes of unsaved work, and saves what is to be saved. The page stays
  /// open for now: something else may still keep the window open. False: it has to stay.
  virtual bool canClose() = 0;
  /// Closes the page after its canClose() has said true and nothing else was in the way.
  virtual void closePage() {}
  /// The module or data that the page edits: it is asked before that is removed, too. Null: none.
  virtual const ZxObject* editedObject() const { return nullptr; }
};
