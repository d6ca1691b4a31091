#include "zxalign/OrthoColumns.h"

namespace {

std::size_t indexOf(OrthoOrientation view, int z)
{
  return static_cast<std::size_t>(z) * 2 + (view == OrthoOrientation::Coronal ? 1 : 0);
}

} // namespace

void OrthoColumns::reset(int slices)
{
  const auto n = static_cast<std::size_t>(slices);
  m_transforms.clear();
  m_transforms.resize(n);
  m_columns.clear();
  m_columns.resize(2 * n);
  deleteBoxes();
}

OrthoColumns::Column& OrthoColumns::column(OrthoOrientation view, int z) noexcept
{
  return m_columns[indexOf(view, z)];
}

const OrthoColumns::Column& OrthoColumns::column(OrthoOrientation view, int z) const noexcept
{
  return m_columns[indexOf(view, z)];
}

void OrthoColumns::mark(OrthoOrientation view, int z, State state) noexcept
{
  Column& c = column(view, z);
  c.state = state;
  ++c.changes;
}

void OrthoColumns::createBoxes()
{
  m_boxes.clear();
  m_boxes.resize(m_transforms.size());
}

McBox2i OrthoColumns::box(int z) const
{
  return hasBoxes() ? m_boxes[static_cast<std::size_t>(z)] : McBox2i();
}

OrthoColumns::Range OrthoColumns::valid(OrthoOrientation view, int z) const noexcept
{
  if (!hasBoxes()) return {};
  const McBox2i& b = m_boxes[static_cast<std::size_t>(z)];
  return view == OrthoOrientation::Sagittal ? Range{b.yMin, b.yMax} : Range{b.xMin, b.xMax};
}

void OrthoColumns::setValid(OrthoOrientation view, int z, Range range) noexcept
{
  if (!hasBoxes()) return;
  McBox2i& b = m_boxes[static_cast<std::size_t>(z)];
  if (view == OrthoOrientation::Sagittal) {
    b.yMin = range.first;
    b.yMax = range.last;
  } else {
    b.xMin = range.first;
    b.xMax = range.last;
  }
}
