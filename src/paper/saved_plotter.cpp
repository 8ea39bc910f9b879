#include "paper/saved_plotter.h"

namespace tv::paper {

SavedPlotter& GlobalSavedPlotter() {
  static SavedPlotter saved;
  return saved;
}

}  // namespace tv::paper
