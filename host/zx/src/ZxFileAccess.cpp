#include "zx/ZxFileAccess.h"

#include "zx/ZxField3.h"
#include "zx/ZxWorkArea.h"

#include <algorithm>
#include <new>

namespace {

/// What stands in until the program installs something: it knows no files.
class NoFiles : public ZxFileAccess {
public:
  std::vector<ZxFileFormat> readableFormats() const override { return {}; }
  std::vector<ZxFileFormat> writableFormats() const override { return {}; }
  std::string checkWritable(const ZxSpatialData&, const std::string& path) const override
  {
    return "Cannot write \"" + path + "\": this program writes no files.";
  }

private:
  ZxFileOutcome readVolume(const ZxReadRequest& request) override
  {
    const std::string name = request.inputs.empty() ? "input" : request.inputs.front();
    return {ZxFileOutcome::State::Failed, {}, "Cannot read \"" + name + "\": this program reads no files."};
  }
  ZxFileOutcome writeVolume(const ZxSpatialData& data, const std::string& path) override
  {
    return {ZxFileOutcome::State::Failed, {}, checkWritable(data, path)};
  }
};

std::unique_ptr<ZxFileAccess>& installed()
{
  static std::unique_ptr<ZxFileAccess> access = std::make_unique<NoFiles>();
  return access;
}

/// Nothing thrown passes the door.
template <class F>
ZxFileOutcome guarded(F f)
{
  try {
    return f();
  } catch (const std::bad_alloc&) {
    return {ZxFileOutcome::State::Failed, {}, "There is not enough memory."};
  } catch (const std::exception& error) {
    return {ZxFileOutcome::State::Failed, {}, error.what()};
  }
}

/// Looks for the range of the values, which whoever shows a volume asks for first: where the voxels stay in a
/// file that takes as long as reading them, and here it can be watched. False when the user wants to stop.
bool findRange(ZxSpatialData& data)
{
  ZxWorkArea* const area = ZxWorkArea::getTheWorkArea();
  float min = 0.0f;
  float max = 0.0f;
  if (ZxLattice* lattice = data.getLattice()) {
    lattice->getRange(min, max, [area](float part) {
      area->setProgressFraction(part);
      area->processPendingEvents();
    });
  }
  return !area->wasInterrupted();
}

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

bool hasEnding(std::string_view path, std::string_view ending)
{
  return path.size() > ending.size() && equalIgnoringCase(path.substr(path.size() - ending.size()), ending);
}

bool isCalled(const ZxFileFormat& format, std::string_view name)
{
  return equalIgnoringCase(format.name, name) ||
         std::any_of(format.endings.begin(), format.endings.end(), [&](std::string_view ending) {
           return equalIgnoringCase(ending, name) || equalIgnoringCase(ending.substr(1), name);
         });
}

} // namespace

ZxFileAccess::~ZxFileAccess() = default;

ZxFileAccess* ZxFileAccess::getTheFileAccess() { return installed().get(); }

void ZxFileAccess::setTheFileAccess(std::unique_ptr<ZxFileAccess> access)
{
  installed() = access ? std::move(access) : std::make_unique<NoFiles>();
}

void ZxFileAccess::noteContent(ZxSpatialData& data)
{
  if (data.isOfType(ZxUniformLabelField3::getClassTypeId())) {
    data.parameters().setString(contentParameter, labelContent);
    return;
  }
  std::string content;
  if (data.parameters().findString(contentParameter, content) && content == labelContent)
    data.parameters().remove(contentParameter);
}

ZxFileOutcome ZxFileAccess::read(const ZxReadRequest& request)
{
  ZxFileOutcome outcome = guarded([&] {
    ZxFileOutcome read = readVolume(request);
    if (!read.data || findRange(*read.data)) return read;
    return ZxFileOutcome{ZxFileOutcome::State::Stopped, {}, "Stopped by the user."};
  });
  if (outcome.data) outcome.data->setFileName(request.inputs.front());
  return outcome;
}

ZxFileOutcome ZxFileAccess::write(ZxSpatialData& data, const std::string& path)
{
  noteContent(data);
  ZxFileOutcome outcome = guarded([&] { return writeVolume(data, path); });
  if (outcome.state == ZxFileOutcome::State::Done) {
    data.setSaved();
    data.setFileName(path);
  }
  return outcome;
}

std::string ZxFileAccess::pathFor(const std::string& path, std::string_view format) const
{
  for (const ZxFileFormat& candidate : writableFormats()) {
    if (!isCalled(candidate, format)) continue;
    const bool fits = std::any_of(candidate.endings.begin(), candidate.endings.end(),
                                  [&](const std::string& ending) { return hasEnding(path, ending); });
    return fits ? path : path + candidate.endings.front();
  }
  return {};
}
