require_relative "test_helper"
require "fileutils"
require "tmpdir"

# Each plugin of a host ships its own copy of the extensions: the first copy
# loaded serves them all, and a later copy's code is never reached.
class TwoCopiesTest < Minitest::Test
  # Loads the build's extensions, then the copies in `folder`; runs setters,
  # show and OK; prints the events heard and the controller's methods whose
  # code lies outside the first copy's file.
  PLUGIN = <<~'RUBY'.freeze
    require "OptionsPanel"
    require "OptionsPanelDriver"
    require File.join(ARGV[0], "OptionsPanel.so")
    require File.join(ARGV[0], "OptionsPanelDriver.so")
    require "OptionsPanel/texts/en"
    require "fiddle"
    heard = []
    observer = Object.new
    %w[preset_changed output_changed environment_changed options_changed close].each do |event|
      observer.define_singleton_method(event) { |_payload| heard << event }
    end
    panel = Velmar::OptionsPanelWindow.new(OptionsPanelTexts::EN)
    panel.observe(observer)
    panel.set_output_dimensions("fixed", 640, 480, 0, 0)
    panel.set_environment_clay(true)
    panel.show
    OptionsPanelDriver.click(:ok)
    puts heard.join(" ")

    def runtime(name, result, *args)
      Fiddle::Function.new(Fiddle::Handle::DEFAULT[name], args, result)
    end
    first = File.read("/proc/self/maps").lines.grep(%r{ #{Regexp.escape(File.realpath($LOADED_FEATURES.grep(/OptionsPanel\.so/).first))}$})
    ranges = first.map { |line| Range.new(*line.split.first.split("-").map(&:hex)) }
    count = Fiddle::Pointer.malloc(4)
    controller = runtime("objc_lookUpClass", Fiddle::TYPE_VOIDP, Fiddle::TYPE_VOIDP).call("OptionsPanel")
    methods = runtime("class_copyMethodList", Fiddle::TYPE_VOIDP, Fiddle::TYPE_VOIDP, Fiddle::TYPE_VOIDP).call(controller, count)
    code_of = runtime("method_getImplementation", Fiddle::TYPE_VOIDP, Fiddle::TYPE_VOIDP)
    outside = count[0, 4].unpack1("L").times.count do |i|
      code = code_of.call(methods[i * Fiddle::SIZEOF_VOIDP, Fiddle::SIZEOF_VOIDP].unpack1("J")).to_i
      ranges.none? { |range| range.cover?(code) }
    end
    puts "#{count[0, 4].unpack1('L')} methods, #{outside} elsewhere"
  RUBY

  def run_with_copies
    Dir.mktmpdir("copy") do |folder|
      %w[OptionsPanel.so OptionsPanelDriver.so].each { |name| FileUtils.cp(File.join(BUILD_DIR, name), folder) }
      yield folder
      Open3.capture3("timeout", "60", RbConfig.ruby, "-I", BUILD_DIR, "-e", PLUGIN, folder)
    end
  end

  def assert_served_by_the_first(out, status)
    heard, methods = out.lines.map(&:chomp)
    assert_equal ["preset_changed output_changed environment_changed options_changed close", true],
                 [heard, status.success?]
    assert_match(/\A[1-9]\d* methods, 0 elsewhere\z/, methods)
  end

  def test_a_copy_of_the_same_build_defines_nothing_and_says_nothing
    out, err, status = run_with_copies { |_folder| nil }
    assert_served_by_the_first(out, status)
    assert_equal "", err
  end

  # A byte appended leaves the library loadable and makes it another build.
  def test_a_copy_of_another_build_is_named_beside_the_first_in_one_warning
    copy = nil
    out, err, status = run_with_copies do |folder|
      copy = File.join(folder, "OptionsPanel.so")
      File.open(copy, "ab") { |f| f.write("\0") }
    end
    assert_served_by_the_first(out, status)
    first = File.join(BUILD_DIR, "OptionsPanel.so")
    assert_equal 1, err.lines.size, err
    assert_match(/#{Regexp.escape(File.basename(File.dirname(copy)))}.*another build than #{Regexp.escape(first)}/, err)
  end
end
