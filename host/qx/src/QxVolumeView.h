#pragma once

#include "QxSliceImage.h"

#include <QWidget>

#include <map>

class QLabel;
class QToolButton;
class QxFullSlider;
class QxGreyWindow;
class QxImageViewer;
class QxPoolWatcher;

/// Shows one volume slice by slice: the picture, the slice slider below it, grey window and zoom above it,
/// and what lies under the cursor.
///
/// Children: "viewer", "slice", "greyWindow", "zoomIn", "zoomOut", "zoomFit", "zoomOne", "zoomText",
/// "pixelText".
class QxVolumeView : public QWidget {
  Q_OBJECT
public:
  QxVolumeView(QxPoolWatcher* watcher, QWidget* parent);

  /// Shows a volume, or nothing. It leaves the view when it leaves the pool.
  void setData(ZxSpatialData* data);
  ZxSpatialData* data() const noexcept { return m_data; }
  int slice() const noexcept { return m_slice; }
  void setSlice(int slice);

protected:
  void keyPressEvent(QKeyEvent* event) override;

private:
  /// How a volume was looked at last.
  struct Look {
    int slice = 0;
    float black = 0.0F;
    float white = 255.0F;
  };
  QWidget* makeTools();
  QToolButton* makeTool(const char* name, const char* icon, const QString& text, const QString& tip);
  Look& look();
  Look firstLook();
  void followData();
  void loadSlice();
  void showSlice();
  void showGreyWindow();
  void showZoom();
  void showPixel(int x, int y, bool inside);
  void zoomBy(float factor);

  ZxSpatialData* m_data = nullptr;
  std::uint64_t m_change = 0; // of the data, as shown
  int m_slice = 0;
  QxSliceImage m_image;
  std::map<const ZxObject*, Look> m_looks;
  QxImageViewer* m_viewer; // these six: children
  QxFullSlider* m_slider;
  QxGreyWindow* m_grey = nullptr;
  QLabel* m_zoom = nullptr;
  QLabel* m_pixel = nullptr;
  QLabel* m_count = nullptr;
};
