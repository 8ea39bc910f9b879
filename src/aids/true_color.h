#pragma once
// "真彩色-->索引色": the colours of selected entities, of the blocks they insert and of the layers
// their colour comes from become the nearest index colours.
namespace tv::aids {

struct ColorChanges {
  int entities = 0;  // selected entities and entities inside blocks
  int layers = 0;
};

// The command body: rounds of selections until one comes back empty; Enter at the first selects
// the whole drawing and ends after it.
void TrueColorCommand();

}  // namespace tv::aids
