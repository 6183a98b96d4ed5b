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
