#pragma once
// The paper and scale the user chose for each sheet, kept in the drawing (SC_INFOR; the paper
// batch's copies and media in PAPER_INFOR) so that the next list of the same drawing shows them
// again: applied when a list opens, stored when its run starts.
#include "plot/generic_review.h"
#include "plot/paper_review.h"
#include "plot/title_review.h"

namespace tv::plot {

// Gives the rows whose rectangle the drawing remembers their stored paper (or, for a paper no
// longer listed, the paper of their stored scale), and repaints those rows. Returns how many
// rows changed.
int ApplyStoredChoices(Dlg_BPlot1& form);
int ApplyStoredChoices(Dlg_BPlot2& form);
// The paper list: each remembered sheet gets its copies back, and its medium when the chosen
// printer still has it.
int ApplyStoredChoices(Dlg_BPlot3& form);

// Stores the rows of the title-block list, followed by the stored rows of sheets not in it.
bool StoreChoices(const Dlg_BPlot2& form);

}  // namespace tv::plot
