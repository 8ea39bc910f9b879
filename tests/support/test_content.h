#pragma once
// An application entity's content for tests: the given primitives, transient or kept.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cad/entities.h"

namespace tv::test_support {

class TestContent final : public cad::CustomContent {
 public:
  TestContent(bool transient, std::vector<cad::CustomPrimitive> prims) : transient_(transient), prims_(std::move(prims)) {}
  std::string dxfName() const override { return "TV_TEST"; }
  std::unique_ptr<cad::CustomContent> clone() const override { return std::make_unique<TestContent>(*this); }
  std::vector<cad::CustomPrimitive> primitives() const override { return prims_; }
  bool isTransient() const override { return transient_; }
  cad::Groups dxfGroups() const override { return {}; }

 private:
  bool transient_;
  std::vector<cad::CustomPrimitive> prims_;
};

}  // namespace tv::test_support
