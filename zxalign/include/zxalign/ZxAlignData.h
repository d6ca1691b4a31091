#pragma once

#include "mc/McDArray.h"
#include "mc/McPrimType.h"
#include "mc/McString.h"
#include "zx/ZxBox3.h"
#include "zx/ZxData.h"
#include "zx/ZxMutex.h"
#include "zxalign/SliceXForm.h"

#include <cstdint>
#include <optional>
#include <vector>

class ZxAlignSlices;
class ZxLabelLattice;
struct SliceMapping;

/// The slices of the module's input as 8-bit images: of the editable and of the reference slice, grey through
/// the module's data window, and as RGBA copies of colour input; besides the raw data and the mask of any
/// slice.
///
/// Images are row-major without padding. The data mutex is held while the lattice is read and while the
/// images are written; it is not recursive.
class ZxAlignData {
public:
  /// The module owns this object and is where window, transforms and projection settings are read.
  explicit ZxAlignData(ZxAlignSlices* module);
  ~ZxAlignData();

  /// Takes a new input, which lives at least until the next init() or reset(), and allocates the buffers. No
  /// slice is chosen and no mask set afterwards, so that the next choice is mapped into the new buffers
  /// whatever its number. False, with everything released, when a pointer is null or there is not enough
  /// memory.
  bool init(ZxSpatialData* data, ZxLattice* lattice);
  /// Forgets the input. Takes the data mutex, as init() does.
  void reset();
  /// Releases the buffers alone.
  void resetData();

  ZxLattice* getLattice() const noexcept { return m_lattice; }
  ZxSpatialData* getSpatialData() const noexcept { return m_data.get(); }
  const ZxDims& getDims() const noexcept { return m_dims; }
  int getNumDataVars() const noexcept;
  McPrimType getPrimType() const noexcept;
  bool isColorField() const noexcept;
  /// The parameters of the input, or null without one.
  ZxParamBundle* getParameters() const noexcept;
  McString getInputDataName() const;
  /// Marks the input as changed after its parameters were written.
  void touchInputData();

  int getEditableSlice() const noexcept { return m_editableSlice; }
  int getReferenceSlice() const noexcept { return m_referenceSlice; }
  /// Choose a slice and map it, when it is another one than before.
  void setEditableSlice(int slice);
  void setReferenceSlice(int slice);
  /// False when the image of one of the two is black because its slice could not be read.
  bool isPairReadable() const noexcept { return m_editableIsRead && m_referenceIsRead; }
  void setMaskLattice(ZxLabelLattice* mask);
  ZxLabelLattice* getMaskLattice() const noexcept { return m_mask; }
  /// Maps the editable slice, then the reference slice.
  void mapSlices();

  unsigned char* getEditableSlicePtr() noexcept { return m_editableImage.data(); }
  unsigned char* getReferenceSlicePtr() noexcept { return m_referenceImage.data(); }
  /// RGBA copies. Without a colour field both are the editable slice's grey image.
  unsigned char* getEditableColorPtr() noexcept;
  unsigned char* getReferenceColorPtr() noexcept;

  /// Copies a whole slice in its own type into a buffer of this object, which the next call overwrites. Null,
  /// after a message, when it cannot be read. Takes the data mutex.
  unsigned char* getOriginalDataPtr(int slice);
  /// The transform with which a slice lies in its image already: in the aligned frame, as projections are
  /// made. None for an image of the slice as it is.
  std::optional<SliceXForm> getEditableProjection() const { return m_editableProjection; }
  std::optional<SliceXForm> getReferenceProjection() const { return m_referenceProjection; }

  /// Takes the projections as they are for images of slices that lie in place already, and keeps them: none
  /// is made anew until releaseProjections(), which says how their slices lie in them.
  void holdProjections();
  void releaseProjections(const SliceXForm& editable, const SliceXForm& reference);

  /// Bit y * width + x (lowest bit of a byte first) is set where the mask's label is not 0; empty without a
  /// mask. Takes the data mutex.
  std::vector<std::uint8_t> getMaskBitfield(int slice);

  ZxMutex& dataMutex() noexcept { return m_mutex; }

  /// How slices are mapped at present.
  SliceMapping mapping() const;

private:
  enum class Role { Editable, Reference };
  /// Maps one slice, or the projection that stands for it.
  void mapSlice(Role role);
  void tellUnreadable(int slice) const;
  bool mapNormally(int slice, McDArray<unsigned char>& grey, McDArray<unsigned char>& colour);
  void project(int first, int last, McDArray<unsigned char>& grey);
  void projectionRange(Role role, int& first, int& last) const;

  ZxAlignSlices* m_module; // borrowed
  ZxLattice* m_lattice = nullptr;
  ZxDims m_dims;
  McHandle<ZxSpatialData> m_data; // keeps the lattice alive until the next init() or reset()
  ZxLabelLattice* m_mask = nullptr;
  McDArray<unsigned char> m_editableImage;
  McDArray<unsigned char> m_referenceImage;
  McDArray<unsigned char> m_editableColour;
  McDArray<unsigned char> m_referenceColour;
  McDArray<unsigned char> m_rawSlice;
  int m_editableSlice = -1;
  int m_referenceSlice = -1;
  bool m_editableIsRead = true;
  bool m_referenceIsRead = true;
  bool m_holdsProjections = false;
  std::optional<SliceXForm> m_editableProjection;
  std::optional<SliceXForm> m_referenceProjection;
  ZxMutex m_mutex;
};
