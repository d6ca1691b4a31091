#pragma once

/// A viewer of the program: page or window that shows data.
class ZxViewer {
public:
  virtual ~ZxViewer() = default;
  /// Shows the viewer; with raise other than 0 in front of others.
  virtual void show(int raise) = 0;
  virtual void hide() = 0;
  virtual bool isShown() const = 0;
};

/// The viewers of the program by number: 0 is the main viewer, 4 an extra window.
class ZxController {
public:
  virtual ~ZxController() = default;

  /// The program's controller, never null: one without viewers until the program sets its own.
  static ZxController* getTheController();
  /// Makes a controller the program's (null: the one without viewers). Not owned; it outlives its use.
  static void setTheController(ZxController* controller);

  /// A viewer, or null when there is none of that number. With create other than 0 one that can be made is
  /// made first.
  virtual ZxViewer* viewer(int number, int create = 0) = 0;
};
