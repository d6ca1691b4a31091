#pragma once

#include <vector>

class QxDrawAlignSlices;

/// The previews of the result's size in the slice view, newest last. Each remembers how it is taken back.
class AlignBorderPreviews {
public:
  /// How the result lies around the slices: its size over theirs, and how many pixels it reaches beyond their
  /// left and top edge; with -1 for either it is centred.
  struct Frame {
    float scaleX;
    float scaleY;
    int originX = -1;
    int originY = -1;
  };

  /// The view outlives this object.
  explicit AlignBorderPreviews(QxDrawAlignSlices& view) : m_view(view) {}

  void show(const Frame& frame);
  /// Takes the newest back. Nothing when there is none.
  void takeBack();
  /// Forgets all, whatever the view shows.
  void clear() { m_frames.clear(); }

private:
  void draw(const Frame& frame, bool light);

  QxDrawAlignSlices& m_view;
  std::vector<Frame> m_frames;
};
