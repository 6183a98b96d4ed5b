// How Velmar::OptionsPanelWindow gets its methods: each group's file defines
// its own, its Ruby names beside their handlers, which are named after them
// ("preset=" is preset_assign).
#pragma once

#include "binding/cxx_guard.h"

#include <ruby.h>

#include <cstddef>

namespace velmar {

struct Method {
  const char *name;
  VALUE (*handler)(ANYARGS);
  int arity;
};

// Defines the methods on the class; each handler is guarded (VELMAR_GUARDED).
template <size_t Count> void define_methods(VALUE klass, const Method (&methods)[Count]) {
  // The function itself, not the macro that newer Rubies put in its place for C++.
  for (const Method &method : methods)
    (rb_define_method)(klass, method.name, method.handler, method.arity);
}

// One for each group's file: panel_methods.cpp, text_table.cpp, observers.cpp,
// preset_methods.cpp, image_methods.cpp and environment_methods.cpp.
void define_panel_methods(VALUE klass);
// Also defines TEXT_KEYS, the 37 keys in the order the panel reads them.
void define_text_methods(VALUE klass);
// Also makes the empty observer list and lets the panel's events reach it.
void define_observer_methods(VALUE klass);
void define_preset_methods(VALUE klass);
void define_image_methods(VALUE klass);
void define_environment_methods(VALUE klass);

} // namespace velmar
