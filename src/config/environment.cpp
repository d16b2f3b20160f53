#include "config/environment.h"

namespace zorva::config {

void Environment::popScope() {
  Frame& f = frames_.back();
  while (vars_.size() > f.base && vars_.back().scope == f.scope) {
    release(vars_.back());
    vars_.pop_back();
  }
  --f.scope;
}

void Environment::popFrame() {
  std::size_t base = frames_.back().base;
  while (vars_.size() > base) {
    release(vars_.back());
    vars_.pop_back();
  }
  frames_.pop_back();
}

int Environment::find(std::string_view name) const {
  // Newest first, so an inner declaration hides an outer one.
  std::size_t base = frames_.back().base;
  for (std::size_t i = vars_.size(); i > base; --i) {
    if (vars_[i - 1].name == name) return static_cast<int>(i - 1);
  }
  if (frames_.size() == 1) return -1;
  for (std::size_t i = frames_[1].base; i > 0; --i) {
    const Variable& v = vars_[i - 1];
    if (v.scope == 0 && v.name == name) return static_cast<int>(i - 1);
  }
  return -1;
}

int Environment::findInScope(std::string_view name) const {
  const Frame& f = frames_.back();
  for (std::size_t i = vars_.size(); i > f.base && vars_[i - 1].scope == f.scope; --i) {
    if (vars_[i - 1].name == name) return static_cast<int>(i - 1);
  }
  return -1;
}

void Environment::addScalar(std::string_view name, Value value, bool bound) {
  Variable v;
  v.name = name;
  v.type = value.type;
  v.bound = bound;
  v.scope = scopeOf();
  v.scalar = value;
  vars_.push_back(std::move(v));
}

bool Environment::addArray(std::string_view name, ValueType type, std::vector<Value> elements) {
  int64_t cells = static_cast<int64_t>(elements.size());
  if (!canHold(cells)) return false;
  cellsInUse_ += cells;
  Variable v;
  v.name = name;
  v.type = type;
  v.isArray = true;
  v.scope = scopeOf();
  v.elements = std::move(elements);
  vars_.push_back(std::move(v));
  return true;
}

}  // namespace zorva::config
