#include "host/ruby_runtime.h"

#include "binding/cxx_guard.h"
#include "binding/jump.h"
#include "binding/report.h"

#include <ruby.h>

#include <cstdio>
#include <vector>

namespace host {

static VALUE absolute_path(const std::string &path) {
  return rb_file_expand_path(rb_str_new_cstr(path.c_str()), Qnil);
}

// The C view of the words, valid as long as they are.
static std::vector<char *> c_strings(std::vector<std::string> &words) {
  std::vector<char *> pointers;
  for (std::string &word : words)
    pointers.push_back(word.data());
  return pointers;
}

// What `ruby` would be given to run an empty program with the folders on its
// load path, in order.
static std::vector<std::string> interpreter_words(const std::vector<std::string> &folders) {
  std::vector<std::string> words = {"velmar-host"};
  for (const std::string &folder : folders)
    words.insert(words.end(), {"-I", folder});
  words.insert(words.end(), {"-e", ""});
  return words;
}

void start_ruby(const Options &options, const std::string &build_folder) {
  ruby_init();
  // ruby_init alone leaves out what `ruby` sets up from its options: the
  // methods that Ruby defines in Ruby (Kernel#tap, #then, ...), the encoding
  // tables, the locale's encoding, the standard load path and RubyGems.
  std::vector<std::string> folders = options.load_paths;
  folders.push_back(build_folder);
  std::vector<std::string> words = interpreter_words(folders);
  std::vector<char *> interpreter_argv = c_strings(words);
  ruby_options(static_cast<int>(interpreter_argv.size()), interpreter_argv.data());
  // The empty program is not run; the plugin is loaded instead, under its own
  // full name, so that $0 and __FILE__ agree as they do under `ruby`.
  ruby_set_script_name(absolute_path(options.script));
  std::vector<std::string> arguments = options.script_arguments;
  std::vector<char *> script_argv = c_strings(arguments);
  ruby_set_argv(static_cast<int>(script_argv.size()), script_argv.data());
}

// Prints the error as `ruby` would for an uncaught one; an error in printing it
// (a broken $stderr, a raising #message) must not end the host in a crash.
static void report(VALUE error) {
  if (!velmar::report_exception(error))
    std::fputs("velmar-host: the plugin raised an error that could not be printed\n", stderr);
}

// The exit status for a jump out of Ruby code that `state` reports.
static int status_after_jump(int state) {
  VALUE error = velmar::exception_of_jump();
  rb_set_errinfo(Qnil);
  if (NIL_P(error)) {
    std::fprintf(stderr, "velmar-host: the plugin jumped out of its script (state %d)\n", state);
    return 1;
  }
  if (rb_obj_is_kind_of(error, rb_eSystemExit))
    return NUM2INT(rb_attr_get(error, rb_intern("status")));
  if (rb_obj_is_kind_of(error, rb_eSignal)) {
    int signal = NUM2INT(rb_funcall(error, rb_intern("signo"), 0));
    std::fprintf(stderr, "velmar-host: stopped by signal %d\n", signal);
    return 128 + signal;
  }
  report(error);
  return 1;
}

int load_plugin() {
  int state = 0;
  rb_load_protect(rb_gv_get("$0"), 0, &state);
  return state ? status_after_jump(state) : -1;
}

// A jump that an observer made during the user's last action (exit, Ctrl-C)
// goes on here, where Ruby stops it as it would stop the script's own.
static VALUE let_ruby_run(VALUE) {
  return velmar::guard_cxx([] {
    velmar::resume_options_panel_jump();
    rb_thread_schedule();
    rb_thread_check_ints();
    return Qnil;
  });
}

int ruby_turn() {
  int state = 0;
  rb_protect(let_ruby_run, Qnil, &state);
  return state ? status_after_jump(state) : -1;
}

int stop_ruby(int status) {
  // ruby_cleanup takes the state of a pending jump, not an exit status; 0: none.
  int cleanup = ruby_cleanup(0);
  return status ? status : cleanup;
}

} // namespace host
