#pragma once

#include "mc/McDArray.h"
#include "zxalign/SliceXForm.h"
#include "zxalign/ZxAutoAlignMethod.h"

#include <memory>

/// Moves and, where allowed, turns the editable slice so that the quality of the pair becomes as high as this
/// search can find.
///
/// A discrete hill climb: a wide first search on reduced images (a grid of shifts of 24 x 24 double steps and
/// a sweep of rotations in steps of 10 degrees), then single steps on finer and finer
/// images, two halvings of the steps at full resolution, and a momentum move that repeats the last successful
/// step. A candidate must be strictly better; the first of equal ones wins.
class ZxOptimizeAlignMethod : public ZxAutoAlignMethod {
public:
  using ZxAutoAlignMethod::ZxAutoAlignMethod;
  static constexpr const char* methodName = "OptimizeAlignMethod";
  static const char* getMethodName() { return methodName; }
  static ZxAutoAlignMethod* createMethod(ZxAlignSlices* module) { return new ZxOptimizeAlignMethod(module); }

  int doLayout() override;

private:
  struct FreeBuffer {
    void operator()(unsigned char* p) const noexcept;
  };
  using Buffer = std::unique_ptr<unsigned char, FreeBuffer>;

  /// A step from the working transform: a shift, or a turn about the slice's own place.
  struct Move {
    float dx = 0.0f, dy = 0.0f, angle = 0.0f;
  };
  enum class Next { Continue, Leave };

  void readPair();
  void chooseReduction();
  bool allocateScratch();
  void startSearch();
  void search();
  Next iterate();
  void reduceImages();
  bool tryMomentum();
  void searchTranslations();
  void searchRotations();
  void consider(const Move& move);
  Next decide();
  void refineLevel();
  void finish();

  float qualityOf(const SliceXForm& editable) const;
  bool stopRequested();
  static SliceXForm moved(SliceXForm xform, const Move& move);
  static void scaleTranslation(SliceXForm& xform, float factor);

  // The pair at full resolution.
  unsigned char* m_referenceImage = nullptr; // owned by the module's slice data
  unsigned char* m_editableImage = nullptr;
  int m_width = 0;
  int m_height = 0;
  int m_channels = 1;

  // The images that are compared at the current level.
  Buffer m_referenceScratch, m_editableScratch;
  const unsigned char* m_reducedReference = nullptr;
  const unsigned char* m_reducedEditable = nullptr;
  int m_reducedWidth = 0;
  int m_reducedHeight = 0;

  SliceXForm m_reference; // translations in pixels of the current level
  SliceXForm m_editable;
  int m_factor = 1; // reduction of the current level, a power of two
  float m_translationStep = 0.0f;
  float m_rotationStep = 0.0f;
  int m_firstRotation = -17; // range of rotation indices
  int m_lastRotation = 18;
  float m_best = 0.0f;
  bool m_reduceAgain = true;
  bool m_momentum = false;
  Move m_lastMove;
  int m_halvings = 0;
  bool m_stopped = false;

  float m_candidateQuality = 0.0f;
  bool m_hasCandidate = false;
  SliceXForm m_candidate;
};
