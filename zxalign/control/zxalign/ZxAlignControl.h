#pragma once

#include "zx/ZxData.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

/// What a program without an editor window drives: the alignment module's work beyond its ports.
///
/// A program loads the package (ZxPackage), creates the module by its class name "ZxAlignSlices" and casts it
/// to this interface. Input, mask, label field, reference, data window, resampling method and the resampling
/// itself go through the module's ports. Slices are counted from 0.

/// One slice's rigid transform: its forward mapping into the aligned frame. Pixels, x to the right, y
/// downwards; degrees, in the sense x' = x cos a + y sin a, y' = -x sin a + y cos a about the slice centre
/// (width / 2, height / 2, integer halves); mirrored in x before that when flipped.
struct ZxAlignTransform {
  float tx = 0.0f;
  float ty = 0.0f;
  float angleDegrees = 0.0f;
  bool flip = false;
  friend bool operator==(const ZxAlignTransform&, const ZxAlignTransform&) = default;
};

/// A landmark: pixels of the unflipped slice, x to the right, y downwards.
struct ZxAlignPoint {
  int x = 0;
  int y = 0;
  friend bool operator==(const ZxAlignPoint&, const ZxAlignPoint&) = default;
};

/// Two neighbouring slices, one of which is moved. side is +1 when the editable slice is the upper one (the
/// higher index), -1 when it is the lower one; the reference slice is editable - side.
struct ZxAlignPair {
  int editable = 0;
  int reference = 0;
  int side = 1;
  friend bool operator==(const ZxAlignPair&, const ZxAlignPair&) = default;
};

/// What has been done with one pair.
struct ZxAlignPairResult {
  ZxAlignPair pair;
  ZxAlignTransform transform; ///< of the editable slice, absolute, right after its alignment
  double qualityBefore = 0.0; ///< 0 to 1, with the editable slice where the pairs before had carried it
  double qualityAfter = 0.0;
  double seconds = 0.0;
  bool changed = false; ///< false when the method left the pair alone
};

/// One setting of the module as the command line, scripts and the manual know it.
struct ZxAlignSetting {
  const char* name;         ///< "iterations"
  const char* unit;         ///< "pixels", "degrees" or ""
  const char* defaultValue; ///< as text; "" where it comes from the input
  const char* range;        ///< "0 or more", "on, off"
  const char* help;         ///< one sentence
};

/// The interpreter's variable that lists the plug-ins. Read once, when the first module is created.
inline constexpr const char* kZxAlignPlugInVariable = "::zxalign_autoalignmethod_plugins";

/// A plug-in that the list asks for.
struct ZxAlignPlugIn {
  std::string name;    ///< for people: the first item of its entry, or the entry where it has no three items
  std::string problem; ///< empty when it is loaded, else why it is not: a clause without a full stop
  std::string path{};  ///< of the file that it has been loaded from
  std::vector<int> methods{}; ///< the ids of its methods
};

class ZxAlignControl {
public:
  virtual ~ZxAlignControl() = default;

  /// Every setting, in the order of the manual.
  virtual std::span<const ZxAlignSetting> settings() const = 0;
  /// Sets one of them from text. Empty, or one sentence that names the setting and what is wrong. Settings
  /// that come from the input (rotation-step, width, height) are to be set after it is connected.
  virtual std::string setSetting(const std::string& name, const std::string& value) = 0;
  /// The current value as text; empty for an unknown name.
  virtual std::string getSetting(const std::string& name) const = 0;

  /// The registered automatic methods in the order of registration: id and name.
  struct Method {
    int id;
    std::string name;
  };
  virtual std::vector<Method> methods() const = 0;
  /// The plug-ins that were wanted, in the order of the list. Those with a problem are missing from
  /// methods().
  virtual std::vector<ZxAlignPlugIn> plugIns() const = 0;

  /// Number of slices of the input; 0 without one.
  virtual int numSlices() const = 0;
  /// The slice that all others are aligned to, unless another one is asked for.
  virtual int referenceSlice() const = 0;
  virtual std::vector<ZxAlignTransform> transforms() const = 0;
  /// Sets the transforms of all slices; landmarks stay. False when there are not as many as slices.
  virtual bool setTransforms(std::span<const ZxAlignTransform> transforms) = 0;
  /// Replaces the landmarks of all slices, one list a slice; landmark k marks the same structure on each.
  /// False, and nothing changes, when there are not as many lists as slices or they differ in length.
  virtual bool setLandmarks(std::span<const std::vector<ZxAlignPoint>> landmarks) = 0;

  /// The landmarks of all slices. Lists of a file may differ in length.
  virtual std::vector<std::vector<ZxAlignPoint>> landmarks() const = 0;

  /// Does that with the landmarks of a table "slice,index,x,y": pixels of the unflipped slice, whole numbers,
  /// one row a landmark in any order, every index on every slice; lines that begin with '#' are remarks.
  /// Empty, or one sentence that names the file, the line and what is wrong.
  virtual std::string setLandmarksFrom(const std::string& fileName) = 0;

  /// Aligns every slice to its neighbour with a method, from the reference slice upwards and then downwards.
  /// Calls done after each pair. Reports progress and stops when the work area is interrupted, or, after a
  /// message, when the method fails or a slice cannot be read: what has been aligned by then stays. Returns
  /// the number of pairs done.
  virtual int alignAll(int method, int reference,
                       const std::function<void(const ZxAlignPairResult&)>& done) = 0;
  /// The same without the first pairs of that order, which an earlier run has done: its transforms are the
  /// present ones. A method that looks at no more than its pair then ends as if it had never been stopped.
  /// Returns the number of pairs done now.
  virtual int alignRest(int firstPair, int method, int reference,
                        const std::function<void(const ZxAlignPairResult&)>& done) = 0;

  /// Quality (0 to 1) of the pair of slices lower and lower + 1 under their transforms, on all their pixels
  /// (a connected mask blackens what it excludes). -1, after a message, when one of them cannot be read.
  virtual double pairQuality(int lower) = 0;
  /// The same, counting only pixels that the connected mask includes in both slices.
  virtual double maskedPairQuality(int lower) = 0;
  /// Whether what a method has said of a slice (bundle "AlignConfidence" of the input's parameters) is of the
  /// slice as it lies now to the one that it was matched with; true where nothing was said.
  virtual bool liesAsMatched(int slice) = 0;

  /// The smallest output size in pixels that holds every transformed slice whole.
  virtual void minimalSize(int& width, int& height) const = 0;
  /// The aligned volume, and the aligned label field, that a resampling would make now: described in the same
  /// way, but each slice is computed when it is read, so that they take the memory of a few slices. They hold
  /// the input and a copy of transforms and settings; what becomes of the module later does not change them.
  /// One thread at a time reads them, and nobody else the input meanwhile, unless the input allows that.
  /// Reading polls the work area: a stop gives false. Empty without an input, or without a label field.
  virtual McHandle<ZxSpatialData> alignedVolume() = 0;
  virtual McHandle<ZxSpatialData> alignedLabels() = 0;

  /// A volume or label field with its slices reduced by whole blocks of factor x factor pixels, made when
  /// they are read: (width / factor) x (height / factor) pixels, of a volume the mean of each block (integers
  /// truncated), of labels the pixel at its centre (of an even factor the one below and to the right). Holds
  /// the data, carries their label and none of their parameters. Empty when nothing would be left of a slice.
  virtual McHandle<ZxSpatialData> reduced(const McHandle<ZxSpatialData>& data, int factor) const = 0;

  /// Writes transforms and landmarks into the parameters of the input. False when that is impossible.
  virtual bool saveAlignment() = 0;
};
