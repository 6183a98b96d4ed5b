require_relative "test_helper"
require "open3"

# What the extension exports to the driver and a host, besides Ruby's entry
# point: docs/MACOS.md lists it, binding/exports.h declares it, and the built
# extension's dynamic symbol table holds exactly that.
class ExportsTest < Minitest::Test
  ROOT = File.expand_path("..", __dir__)

  # The list in docs/MACOS.md: the names in code at the start of each item of
  # its "What the bundle exports" section.
  def documented
    doc = File.read(File.join(ROOT, "docs/MACOS.md"))
    section = doc[/^## What the bundle exports\n(.*?)(?=^#+ |\z)/m, 1] || flunk("no exports section")
    names = section.scan(/^- `(\w+)`/).flatten
    refute_empty names
    names.sort
  end

  def extension_file
    $LOADED_FEATURES.find { |f| File.basename(f) == "OptionsPanel.#{RbConfig::CONFIG['DLEXT']}" } ||
      flunk("OptionsPanel is not loaded from a file")
  end

  # Our own global symbols of the dynamic table. GNU's Objective-C runtime
  # gives every class, instance variable and selector record a global name
  # whatever the visibility (Apple's does not), the C++ library's headers give
  # its template instances (std::, __gnu_cxx::) default visibility, the
  # sanitizers' build names the type of every function it checks calls of,
  # and the linker adds the ends of its sections: none of them is an entry
  # point of ours.
  NOT_OURS = /\A(\.objc_|__objc_|_ZN?K?(St|9__gnu_cxx)|_ZT[IS]F)/.freeze

  def exported
    out, status = Open3.capture2("nm", "-D", "--defined-only", extension_file)
    assert status.success?, "nm failed"
    names = out.lines.map { |line| line.split.last }
    names.reject { |name| name.match?(NOT_OURS) || %w[_edata _end __bss_start].include?(name) }.sort
  end

  def test_the_dynamic_symbol_table_holds_what_the_docs_list
    assert_equal documented, exported
  end

  def test_the_exports_header_declares_what_the_docs_list
    header = File.read(File.join(ROOT, "binding/exports.h"))
    declared = header.scan(/^OPTIONS_PANEL_EXPORT [^;]*?\b(\w+)\(/).flatten.sort
    assert_equal documented, declared
  end
end
