#pragma once

#include <QWidget>

class QStackedLayout;
class QxPoolWatcher;
class QxVolumeView;
class ZxObject;
class ZxSpatialData;

/// Page 0 of the main window: the selected volume, or what can be done while there is none.
///
/// Children: "volumeView", "openHint" with the button "openButton", "hiddenHint".
class QxVolumePage : public QWidget {
  Q_OBJECT
public:
  QxVolumePage(QxPoolWatcher* watcher, QWidget* parent);

  /// Shows the volume that an object stands for: itself, or the primary input of a module. An object that
  /// stands for none leaves what is shown.
  void setObject(ZxObject* object);
  /// Shows none.
  void clear();
  /// What is shown, or null.
  ZxSpatialData* data() const;
  /// The volume that an object stands for, or null.
  static ZxSpatialData* volumeOf(ZxObject* object);
  QxVolumeView* view() const noexcept { return m_view; }

  /// Whether volumes are shown at all.
  void setViewerShown(bool shown);
  bool isViewerShown() const noexcept { return m_shown; }

Q_SIGNALS:
  void openWanted();
  /// Another volume is shown, or none.
  void dataChanged();
  void viewerShown(bool shown);

private:
  QWidget* makeOpenHint();
  QWidget* makeHiddenHint();
  void choosePage();

  QStackedLayout* m_pages; // these four: children
  QxVolumeView* m_view;
  QWidget* m_openHint;
  QWidget* m_hiddenHint;
  bool m_shown = true;
};
