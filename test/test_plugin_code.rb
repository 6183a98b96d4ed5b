require "minitest/autorun"

# What a plugin author copies (the example plugin, its text tables, every Ruby
# snippet of the README and docs/API.md) parses on the Ruby that runs the
# suite: `make test-rubies` runs it on the oldest and newest Ruby hosts embed.
class PluginCodeTest < Minitest::Test
  ROOT = File.expand_path("..", __dir__)

  def snippets(doc)
    File.read(File.join(ROOT, doc)).scan(/^```ruby\n(.*?)^```/m).flatten
  end

  def test_the_examples_and_every_documented_snippet_parse
    sources = Dir[File.join(ROOT, "examples/**/*.rb")].map { |path| [path, File.read(path)] }
    %w[README.md docs/API.md].each do |doc|
      refute_empty snippets(doc), "#{doc}: no Ruby snippet found"
      snippets(doc).each_with_index { |code, i| sources << ["#{doc}, snippet #{i + 1}", code] }
    end
    sources.each do |name, code|
      RubyVM::InstructionSequence.compile(code, name)
    rescue SyntaxError => e
      flunk "#{name} is not valid Ruby #{RUBY_VERSION}: #{e.message}"
    end
  end
end

require_relative "test_helper"
require "tmpdir"

# The snippets run as a plugin author would run a copy: saved in a folder of
# their own, with only the build folder on the load path.
class SnippetRunTest < Minitest::Test
  include PanelTest

  def run_snippet(doc, index)
    code = File.read(File.expand_path("../#{doc}", __dir__)).scan(/^```ruby\n(.*?)^```/m).flatten[index]
    Dir.mktmpdir("plugin") do |folder|
      File.write(File.join(folder, "my_plugin.rb"), code)
      press_ok = "load 'my_plugin.rb'; require 'OptionsPanelDriver'; OptionsPanelDriver.click(:ok)"
      Open3.capture3("timeout", "60", RbConfig.ruby, "-I", BUILD_DIR, "-e", press_ok, chdir: folder)
    end
  end

  def test_the_readme_plugin_runs_from_any_folder
    out, err, status = run_snippet("README.md", 0)
    assert status.success?, err
    assert_equal "1920 x 1080 as png\npanel closed\n", out
  end

  def test_the_getting_started_plugin_runs_from_any_folder
    out, err, status = run_snippet("docs/API.md", 0)
    assert status.success?, err
    assert_equal "1920 x 1080 as png\nclosed\n", out
  end
end
