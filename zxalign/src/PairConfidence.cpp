#include "zxalign/PairConfidence.h"

#include "AlignmentStorage.h"
#include "zx/ZxParamBundle.h"

#include <QTransform>

#include <algorithm>
#include <cmath>

namespace {

// What many edits of the whole stack round away is less, a step by hand is more.
constexpr double samePlace = 0.05; // pixels

bool isIn(int slice, const McDArray<SliceInfo>& slices)
{
  return slice >= 0 && slice < static_cast<int>(slices.size());
}

const SliceInfo& at(const McDArray<SliceInfo>& slices, int slice)
{
  return slices[static_cast<std::size_t>(slice)];
}

} // namespace

PairConfidence::Corners PairConfidence::cornersOf(const SliceXForm& slice, const SliceXForm& reference,
                                                  const ZxDims& dims)
{
  const auto cx = static_cast<float>(dims.width / 2), cy = static_cast<float>(dims.height / 2);
  QTransform there, back;
  slice.getMatrix(there, cx, cy);
  reference.getInverseMatrix(back, cx, cy);
  const QPointF ends[] = {
      {0.0, 0.0}, {static_cast<double>(dims.width), 0.0}, {0.0, static_cast<double>(dims.height)}};
  Corners corners{};
  for (std::size_t i = 0; i < 3; ++i) {
    const QPointF aligned = mapPoint(there, ends[i].x(), ends[i].y());
    const QPointF corner = mapPoint(back, aligned.x(), aligned.y());
    corners[2 * i] = corner.x();
    corners[2 * i + 1] = corner.y();
  }
  return corners;
}

bool PairConfidence::isOf(const SliceXForm& slice, const SliceXForm& of, const ZxDims& dims) const
{
  if (!corners) return true;
  const Corners now = cornersOf(slice, of, dims);
  return std::equal(now.begin(), now.end(), corners->begin(),
                    [](double a, double b) { return std::abs(a - b) < samePlace; });
}

PairConfidences::PairConfidences(ZxParamBundle* parameters, const ZxDims& dims)
  : m_all(parameters ? parameters->findBundle("AlignConfidence") : nullptr), m_dims(dims)
{
}

std::optional<PairConfidence> PairConfidences::find(int slice) const
{
  const ZxParamBundle* own =
      m_all && slice >= 0 ? m_all->findBundle(storage::sliceName(static_cast<std::size_t>(slice))) : nullptr;
  PairConfidence said;
  if (!own || !own->findNums("reference", 1, &said.reference) ||
      !own->findReals("confidence", 1, &said.value))
    return std::nullopt;
  own->findString("reason", said.reason);
  PairConfidence::Corners corners;
  if (own->findReals("corners", static_cast<int>(corners.size()), corners.data())) said.corners = corners;
  return said;
}

void PairConfidences::note(int slice, int reference, const McDArray<SliceInfo>& slices)
{
  ZxParamBundle* own = m_all->findBundle(storage::sliceName(static_cast<std::size_t>(slice)));
  if (!own || !isIn(slice, slices) || !isIn(reference, slices)) return;
  const PairConfidence::Corners corners =
      PairConfidence::cornersOf(at(slices, slice), at(slices, reference), m_dims);
  own->setReals("corners", {corners.begin(), corners.end()});
}

void PairConfidences::adopt(const McDArray<SliceInfo>& slices)
{
  for (int slice = 0; m_all && slice < static_cast<int>(slices.size()); ++slice)
    if (const auto said = find(slice); said && !said->corners) note(slice, said->reference, slices);
}

void PairConfidences::follow(int slice, const std::optional<PairConfidence>& before,
                             const McDArray<SliceInfo>& slicesBefore, const McDArray<SliceInfo>& slices)
{
  const std::optional<PairConfidence> now = find(slice);
  if (!now || now == before || slices.size() != slicesBefore.size()) return;
  note(slice, now->reference, slices);
  for (int other = 0; other < static_cast<int>(slices.size()); ++other) {
    if (other == slice || at(slices, other) == at(slicesBefore, other)) continue;
    const auto said = find(other);
    if (said && isIn(said->reference, slices) &&
        said->isOf(at(slicesBefore, other), at(slicesBefore, said->reference), m_dims))
      note(other, said->reference, slices);
  }
}
