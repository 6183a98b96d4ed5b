require_relative "test_helper"
require "tmpdir"

# What a plugin author copies (the example plugin, its text tables, every Ruby
# snippet of the README and docs/API.md) parses on the Ruby that runs the
# suite: `make test-rubies` runs it on the oldest and newest Ruby hosts embed.
class PluginCodeTest < Minitest::Test
  # The Ruby snippets of a document by name, "README.md, snippet 1" and on.
  def snippets(doc)
    codes = File.read(File.expand_path("../#{doc}", __dir__)).scan(/^```ruby\n(.*?)^```/m).flatten
    codes.each.with_index(1).to_h { |code, i| ["#{doc}, snippet #{i}", code] }
  end

  # A syntax error names the file or snippet that has it.
  def test_the_examples_and_every_documented_snippet_parse
    Dir["#{__dir__}/../examples/**/*.rb"].each { |path| RubyVM::InstructionSequence.compile_file(path) }
    documented = snippets("README.md").merge(snippets("docs/API.md"))
    documented.each { |name, code| RubyVM::InstructionSequence.compile(code, name) }
  end

  # The first snippet of each, a whole plugin, runs as a plugin author would run
  # a copy: from an empty folder, with only the build folder on the load path.
  # That it prints what it should also shows that the snippets were found.
  def test_the_first_plugin_of_each_document_runs_from_any_folder
    { "README.md" => "panel closed", "docs/API.md" => "closed" }.each do |doc, closed|
      plugin = "#{snippets(doc).values.first}\nrequire 'OptionsPanelDriver'\nOptionsPanelDriver.click(:ok)\n"
      out, err, status = Dir.mktmpdir("plugin") do |folder|
        Open3.capture3("timeout", "60", RbConfig.ruby, "-I", BUILD_DIR, "-e", plugin, chdir: folder)
      end
      assert_equal ["1920 x 1080 as png\n#{closed}\n", true], [out, status.success?], "#{doc}: #{err}"
    end
  end
end
