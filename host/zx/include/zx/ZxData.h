#pragma once

#include "zx/ZxLattice.h"
#include "zx/ZxObject.h"
#include "zx/ZxParamBundle.h"

#include <atomic>
#include <cstdint>
#include <string>

/// A data object: something that modules read, with a bundle of parameters that is saved with it.
class ZxData : public ZxObject {
public:
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }

  ZxParamBundle& parameters() noexcept { return m_parameters; }
  const ZxParamBundle& parameters() const noexcept { return m_parameters; }

  int parse(Tcl_Interp* interp, int argc, char** argv) override;
  std::vector<ZxCommandHelp> commands() const override;

  /// Says that the data or its parameters have changed: they count as unsaved from now on.
  void touch();
  bool isUnsaved() const noexcept { return m_changes != m_saved; }
  void setSaved() { setSaved(m_changes); }
  /// Counts the changes so far; with setSaved() it says which state of the data was saved.
  std::uint64_t changeCount() const noexcept { return m_changes; }
  void setSaved(std::uint64_t changeCount);

  /// Name of the file from which the data were read or to which they were last written; empty when they have
  /// none. That of slices is the name of their folder or of the first.
  const std::string& getFileName() const noexcept { return m_fileName; }
  void setFileName(std::string name) { m_fileName = std::move(name); }

  /// True while a job works with the data on another thread: the pool does not remove them.
  bool isInUse() const noexcept { return m_users > 0; }

  /// Label of something derived from an object: "stack.tif" and "align" give "stack.align".
  static McString composeLabel(const McString& base, const char* suffix);

private:
  friend class ZxDataUse;
  ZxParamBundle m_parameters;
  std::uint64_t m_changes = 0;
  std::uint64_t m_saved = 0;
  std::string m_fileName;
  std::atomic<int> m_users{0};
};

/// Data in space. Where it is a volume on a grid it gives its lattice.
class ZxSpatialData : public ZxData {
public:
  static const McTypeInfo& getClassTypeId();
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }

  int parse(Tcl_Interp* interp, int argc, char** argv) override;
  std::vector<ZxCommandHelp> commands() const override;

  /// The lattice, owned by this object; null when it has none.
  virtual ZxLattice* getLattice() noexcept { return nullptr; }
  const ZxLattice* getLattice() const noexcept { return const_cast<ZxSpatialData*>(this)->getLattice(); }
};

/// Keeps data as they are for the time that this object lives, which may end on any thread: they stay in the
/// pool, and their voxels cannot be written to.
class ZxDataUse {
public:
  explicit ZxDataUse(McHandle<ZxSpatialData> data);
  ~ZxDataUse();
  ZxDataUse(const ZxDataUse&) = delete;
  ZxDataUse& operator=(const ZxDataUse&) = delete;
  ZxSpatialData& data() const noexcept { return *m_data; }

private:
  McHandle<ZxSpatialData> m_data;
};

/// Where the first voxel lies and how large a voxel is in the file that the data came from, exactly.
///
/// A lattice's box starts at 0 and is kept in single precision; the origin, the exact voxel size and the
/// unit wait in the parameters (bundle "File") until the data are written again.
struct ZxFileGeometry {
  double origin[3] = {0, 0, 0};
  double voxelSize[3] = {1, 1, 1};
  std::string unit; ///< as the file names it, e.g. "micron"; empty when unknown

  static constexpr const char* bundleName = "File";
  /// What the bundle of the data says, completed from the box of its lattice.
  static ZxFileGeometry of(const ZxSpatialData& data);
  void store(ZxParamBundle& parameters) const;
  /// The box of a lattice of these dimensions: from 0 to (n - 1) voxel sizes along each axis.
  ZxBox3f box(const ZxDims& dims) const noexcept;
};
