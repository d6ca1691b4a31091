#pragma once

#include "PlacementSearch.h"
#include "zxalign/SliceXForm.h"
#include "zxalign/ZxAlignSettings.h"

#include <cstddef>
#include <memory>
#include <vector>

/// The search for the transform of the editable slice with which a pair has the highest quality.
///
/// A discrete hill climb: a wide first search on reduced images (a grid of shifts of 24 x 24 double steps and
/// a sweep of rotations in steps of 10 degrees), then single steps on finer and finer images, two halvings of
/// the steps at full resolution, and a momentum move that repeats the last successful step. A candidate must
/// be strictly better; the first of equal ones wins.
class LeastSquaresSearch {
public:
  /// Borrows the images. Of the settings those of the least-squares method count.
  LeastSquaresSearch(const ImagePair& pair, const ZxAlignSettings& settings, const SliceXForm& reference,
                     const SliceXForm& editable);

  /// Takes the memory that the search needs; 0, or the number of bytes that could not be had.
  std::size_t allocate();
  /// Searches until nothing improves, the iterations are used up, or `stop` says yes.
  void run(const PlacementSearch::StopQuery& stop);

  /// The best transform found, in pixels of the full image.
  const SliceXForm& editable() const noexcept { return m_editable; }
  /// The quality reached on the images of the last level.
  float quality() const noexcept { return m_best; }
  /// How often a better transform was taken.
  int numAcceptedMoves() const noexcept { return m_acceptedMoves; }

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

  void chooseReduction();
  void search();
  Next iterate();
  void reduceImages();
  bool tryMomentum();
  void addTranslations();
  void addRotations();
  void addCandidate(const Move& move);
  Next tryCandidates();
  void accept(const SliceXForm& editable, float quality);
  Next nextLevel();
  bool stopRequested();

  ImagePair m_pair; // at full resolution
  ZxAlignSettings m_settings;
  PlacementSearch::StopQuery m_stop;

  Buffer m_referenceScratch, m_editableScratch; // the images of the current level when they are reduced
  PlacementSearch m_placements;

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
  int m_acceptedMoves = 0;
  bool m_stopped = false;

  std::vector<Move> m_moves; // of one pass, in the order in which the first of equal ones wins
  std::vector<SliceXForm> m_candidates;
};
