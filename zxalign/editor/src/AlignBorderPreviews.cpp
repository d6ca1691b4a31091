#include "AlignBorderPreviews.h"

#include "zxalign/QxDrawAlignSlices.h"

void AlignBorderPreviews::show(const Frame& frame)
{
  draw(frame, true);
  m_frames.push_back(frame);
}

void AlignBorderPreviews::takeBack()
{
  if (m_frames.empty()) return;
  const Frame frame = m_frames.back();
  m_frames.pop_back();
  draw(frame, false);
}

void AlignBorderPreviews::draw(const Frame& frame, bool light)
{
  m_view.drawImageSize(frame.scaleX, frame.scaleY, light, frame.originX, frame.originY);
}
