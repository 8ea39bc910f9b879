// BLOCKS and ENTITIES sections: block definitions and the entities of every block.
#include "cad/dxf_reader_internal.h"

namespace tv::cad::dxf_read {

namespace {

// R12 files written by later programs name the layout blocks this way.
std::string_view LayoutBlockName(std::string_view name) {
  if (EqualsNoCase(name, "$MODEL_SPACE")) return "*Model_Space";
  if (EqualsNoCase(name, "$PAPER_SPACE")) return "*Paper_Space";
  return name;
}

// Entities that only exist inside a POLYLINE or INSERT; met on their own they are skipped.
bool IsSubEntity(std::string_view name) { return name == "VERTEX" || name == "SEQEND" || name == "ATTRIB"; }

// The 67 group marks paper space entities of files without owner handles (R12). The writer
// derives it from the owner block, so the group is taken out of the kept groups.
bool TakePaperSpaceFlag(Entity& e) {
  ObjectExtras* x = e.extrasIfAny() ? &e.extras() : nullptr;
  if (!x) return false;
  bool paper = false;
  std::erase_if(x->unknown, [&paper](const Group& g) {
    if (g.code != 67) return false;
    paper = g.asInt() == 1;
    return true;
  });
  return paper;
}

}  // namespace

void Reader::indexBlock(BlockRecord& b, std::string_view rawName) {
  if (!b.name.empty()) {
    blocksByName_.emplace(b.name, &b);
    blockIds_.add(b.name, b.id);
  }
  if (!rawName.empty() && rawName != b.name) {
    blocksByName_.emplace(std::string(rawName), &b);
    blockIds_.add(rawName, b.id);
  }
  if (!b.id.isNull()) blocksById_[b.id.value] = &b;
}

BlockRecord& Reader::createBlockRecord(std::string name) {
  auto block = std::make_unique<BlockRecord>();
  block->name = std::move(name);
  if (block->name.size() > 1 && block->name[0] == '*' && !block->isModelSpace() && !block->isPaperSpace())
    block->blockFlags |= BlockRecord::kAnonymous;
  if (auto it = db_.tableHeads.find("BLOCK_RECORD"); it != db_.tableHeads.end()) block->owner = it->second.id;
  registerLater(*block);
  BlockRecord& ref = *block;
  db_.blocks.push_back(std::move(block));
  indexBlock(ref);
  return ref;
}

std::string Reader::freeAnonymousName() {
  for (;;) {
    std::string name = "*U" + std::to_string(++anonymousCounter_);
    if (!blocksByName_.count(name)) return name;
  }
}

BlockRecord* Reader::blockRecordById(ObjectId id) const {
  auto it = blocksById_.find(id.value);
  return it == blocksById_.end() ? nullptr : it->second;
}

BlockRecord& Reader::modelSpace() {
  if (!modelSpace_) {
    auto it = blocksByName_.find(std::string_view("*Model_Space"));
    modelSpace_ = it != blocksByName_.end() ? it->second : &createBlockRecord("*Model_Space");
  }
  return *modelSpace_;
}

BlockRecord& Reader::paperSpace() {
  if (!paperSpace_) {
    auto it = blocksByName_.find(std::string_view("*Paper_Space"));
    paperSpace_ = it != blocksByName_.end() ? it->second : &createBlockRecord("*Paper_Space");
  }
  return *paperSpace_;
}

bool Reader::readEntity(std::string_view dxfName, BlockRecord* owner, bool keep) {
  if (IsSubEntity(dxfName)) {
    warnOnce("stray:" + std::string(dxfName),
             Format("第 %llu 行的 %s 不属于任何实体，已忽略", static_cast<unsigned long long>(lastLine_),
                    std::string(dxfName).c_str()));
    return skipToNextEntry();
  }
  std::unique_ptr<Entity> e = DecodeEntity(dxfName, tok_, *this);
  if (!e) return tok_.error().empty() ? failIncomplete() : failTokenizer();
  sawHandle(e->id);
  if (!keep) return true;
  const bool paper = TakePaperSpaceFlag(*e);
  if (!owner) {
    if (!e->owner.isNull()) {
      if (lastOwner_ && lastOwner_->id == e->owner) owner = lastOwner_;
      else owner = blockRecordById(e->owner);
    }
    if (!owner) owner = paper ? &paperSpace() : &modelSpace();
    lastOwner_ = owner;
  }
  db_.appendEntity(*owner, std::move(e));
  return true;
}

bool Reader::readEntities() {
  DxfGroup g;
  for (;;) {
    tok_.release();
    reportProgress();
    if (!next(g)) return false;
    if (g.code != 0) {
      warnOnce("entities-stray", Format("ENTITIES 段第 %llu 行有多余的组，已忽略", static_cast<unsigned long long>(g.line)));
      continue;
    }
    std::string_view name = TrimBlanks(g.text);
    if (name == "ENDSEC") return true;
    if (name == "SECTION" || name == "EOF") {
      warn("ENTITIES 段缺少 ENDSEC");
      tok_.pushBack();
      return true;
    }
    if (!readEntity(name, nullptr)) return false;
  }
}

bool Reader::readBlockBegin(BlockRecord*& current) {
  ObjectId beginId, recordId, layer;
  std::string rawName, xrefPath, description;
  std::int16_t flags = 0;
  Point3d base;
  bool haveName = false;
  DxfGroup g;
  const std::uint64_t line = lastLine_;
  for (;;) {
    if (!next(g)) return false;
    if (g.code == 0) break;
    switch (g.code) {
      case 5:
        beginId = ObjectId(static_cast<std::uint64_t>(g.integer));
        sawHandle(beginId);
        break;
      case 330: if (recordId.isNull()) recordId = ObjectId(static_cast<std::uint64_t>(g.integer)); break;
      case 8: layer = layerByName(text(TrimBlanks(g.text))); break;
      case 2: rawName = g.text; haveName = true; break;
      case 3: if (!haveName) rawName = g.text; break;
      case 70: flags = static_cast<std::int16_t>(g.integer); break;
      case 10: base.x = g.real; break;
      case 20: base.y = g.real; break;
      case 30: base.z = g.real; break;
      case 1: xrefPath = text(g.text); break;
      case 4: description = text(g.text); break;
      case 102: {
        ObjectExtras ignored;  // the BLOCK entity's own groups are not kept
        if (!read102Into(ignored, g)) return false;
        break;
      }
      default: break;  // 100 markers, 67, extended data of the BLOCK entity
    }
  }
  tok_.pushBack();

  std::string name(LayoutBlockName(text(rawName)));
  BlockRecord* block = recordId.isNull() ? nullptr : blockRecordById(recordId);
  if (!block && !name.empty()) {
    auto it = blocksByName_.find(name);
    if (it == blocksByName_.end()) it = blocksByName_.find(std::string_view(rawName));
    if (it != blocksByName_.end()) block = it->second;
  }
  if (block && definedBlocks_.count(block)) {
    warn(Format("第 %llu 行的块 %s 重复定义，只保留第一个", static_cast<unsigned long long>(line), name.c_str()));
    current = nullptr;
    return true;
  }
  bool madeAnonymous = false;
  if (!block) {
    if (name.empty()) {
      madeAnonymous = true;
      warn(Format("第 %llu 行的块没有名称，已作为匿名块读入", static_cast<unsigned long long>(line)));
      block = &createBlockRecord(freeAnonymousName());
    } else {
      block = &createBlockRecord(name);
      if (rawName != name) indexBlock(*block, rawName);
    }
  } else if (block->name.empty()) {
    // A nameless BLOCK_RECORD named by its BLOCK; a nameless pair becomes anonymous.
    if (!name.empty()) {
      block->name = name;
    } else {
      warn(Format("第 %llu 行的块没有名称，已作为匿名块读入", static_cast<unsigned long long>(line)));
      block->name = freeAnonymousName();
      madeAnonymous = true;
    }
    indexBlock(*block);
  }
  definedBlocks_.insert(block);
  block->beginId = beginId;
  block->beginLayer = layer;
  block->blockFlags = madeAnonymous ? static_cast<std::int16_t>(flags | BlockRecord::kAnonymous) : flags;
  block->basePoint = base;
  block->xrefPath = std::move(xrefPath);
  block->description = std::move(description);
  current = block;
  return true;
}

bool Reader::readBlockEnd(BlockRecord* current) {
  DxfGroup g;
  for (;;) {
    if (!next(g)) return false;
    if (g.code == 0) break;
    if (g.code == 5) {
      sawHandle(ObjectId(static_cast<std::uint64_t>(g.integer)));
      if (current) current->endId = ObjectId(static_cast<std::uint64_t>(g.integer));
    }
  }
  tok_.pushBack();
  return true;
}

bool Reader::readBlocks() {
  DxfGroup g;
  BlockRecord* current = nullptr;
  bool inBlock = false;  // between BLOCK and ENDBLK, also for a skipped duplicate
  for (;;) {
    tok_.release();
    reportProgress();
    if (!next(g)) return false;
    if (g.code != 0) {
      warnOnce("blocks-stray", Format("BLOCKS 段第 %llu 行有多余的组，已忽略", static_cast<unsigned long long>(g.line)));
      continue;
    }
    std::string_view name = TrimBlanks(g.text);
    if (name == "ENDSEC" || name == "SECTION" || name == "EOF") {
      if (inBlock) warn("BLOCKS 段中最后一个块缺少 ENDBLK");
      if (name != "ENDSEC") {
        warn("BLOCKS 段缺少 ENDSEC");
        tok_.pushBack();
      }
      return true;
    }
    if (name == "BLOCK") {
      if (inBlock) warn(Format("第 %llu 行之前的块缺少 ENDBLK", static_cast<unsigned long long>(g.line)));
      if (!readBlockBegin(current)) return false;
      inBlock = true;
      continue;
    }
    if (name == "ENDBLK") {
      if (!readBlockEnd(current)) return false;
      current = nullptr;
      inBlock = false;
      continue;
    }
    if (!inBlock) {
      warnOnce("blocks-outside", Format("BLOCKS 段第 %llu 行的 %s 不在块定义中，已忽略",
                                        static_cast<unsigned long long>(g.line), std::string(name).c_str()));
    }
    if (!readEntity(name, current, current != nullptr) ) return false;
  }
}

}  // namespace tv::cad::dxf_read
