require_relative "test_helper"

# What the extension exports to the driver and a host, besides Ruby's entry
# point: docs/MACOS.md lists it, binding/exports.h declares it, and the built
# extension's dynamic symbol table holds exactly that.
class ExportsTest < Minitest::Test
  # Our own global symbols of the dynamic table. GNU's Objective-C runtime
  # gives every class, instance variable and selector record a global name
  # whatever the visibility (Apple's does not), the C++ library's headers give
  # its template instances (std::, __gnu_cxx::) default visibility, the
  # sanitizers' build names the type of every function it checks calls of,
  # and the linker adds the ends of its sections: none of them is an entry
  # point of ours.
  NOT_OURS = /\A(\.objc_|__objc_|_ZN?K?(St|9__gnu_cxx)|_ZT[IS]F|(_edata|_end|__bss_start)\z)/.freeze

  def test_the_header_and_the_dynamic_symbol_table_hold_what_the_docs_list
    doc = File.read(File.expand_path("../docs/MACOS.md", __dir__))
    documented = doc[/^## What the bundle exports\n(.*?)(?=^#+ |\z)/m, 1].to_s.scan(/^- `(\w+)`/).flatten.sort
    header = File.read(File.expand_path("../binding/exports.h", __dir__))
    assert_equal documented, header.scan(/^OPTIONS_PANEL_EXPORT [^;]*?\b(\w+)\(/).flatten.sort, "exports.h"
    library = $LOADED_FEATURES.find { |f| File.basename(f) == "OptionsPanel.#{RbConfig::CONFIG['DLEXT']}" }
    out, status = Open3.capture2("nm", "-D", "--defined-only", library.to_s)
    assert status.success?, "nm failed on the loaded OptionsPanel: #{library.inspect}"
    assert_equal documented, out.lines.map { |line| line.split.last }.grep_v(NOT_OURS).sort, "symbol table"
  end
end
