#include "io/FileAccess.h"

#include "Formats.h"
#include "zx/ZxFileAccess.h"
#include "zx/ZxWorkArea.h"

namespace io {
namespace {

using State = ZxFileOutcome::State;

/// Turns what this library throws into an outcome.
template <class F>
ZxFileOutcome outcomeOf(F f)
{
  try {
    return f();
  } catch (const Interrupted& stop) {
    return {State::Stopped, {}, stop.what()};
  } catch (const Error& error) {
    return {State::Failed, {}, error.what()};
  }
}

McHandle<ZxSpatialData> readAs(const ZxReadRequest& request)
{
  ReadOptions options{.tooLarge = TooLarge::LeaveInFile};
  if (request.unequalSlices == ZxUnequalSlices::PadToLargest)
    options.unequalSlices = UnequalSlices::PadToLargest;
  switch (request.as) {
  case ZxReadAs::Field:
    return readVolume(request.inputs, options);
  case ZxReadAs::Labels:
    return readLabels(request.inputs, options);
  case ZxReadAs::Automatic:
    break;
  }
  return readAnything(request.inputs, options);
}

class FileAccess final : public ZxFileAccess {
public:
  std::vector<ZxFileFormat> readableFormats() const override
  {
    std::vector<ZxFileFormat> formats = writableFormats();
    for (ZxFileFormat& format : formats) {
      // Read as well, but written only in their own formats' other forms.
      if (format.name == "PNG") format = {"Pictures", {".png", ".jpg", ".jpeg", ".bmp"}};
      if (format.name == "NIfTI") format.endings.insert(format.endings.end(), {".hdr", ".img"});
    }
    return formats;
  }
  std::vector<ZxFileFormat> writableFormats() const override
  {
    std::vector<ZxFileFormat> formats;
    for (const auto& format : allFormats()) formats.push_back({format->name(), format->endings()});
    return formats;
  }
  std::string checkWritable(const ZxSpatialData& data, const std::string& path) const override
  {
    const ZxLattice* lattice = data.getLattice();
    if (!lattice) return "Cannot write \"" + path + "\": there are no voxels to write.";
    return io::checkWritable(lattice->shape(), path);
  }

private:
  ZxFileOutcome readVolume(const ZxReadRequest& request) override
  {
    return outcomeOf([&] { return ZxFileOutcome{State::Done, io::readAs(request), {}}; });
  }
  ZxFileOutcome writeVolume(const ZxSpatialData& data, const std::string& path) override
  {
    return outcomeOf([&] {
      io::writeVolume(data, path);
      return ZxFileOutcome();
    });
  }
};

} // namespace

void installFileAccess() { ZxFileAccess::setTheFileAccess(std::make_unique<FileAccess>()); }

} // namespace io
