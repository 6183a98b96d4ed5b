# Lines of the product and of the suite, blank lines and comment lines left
# out: the suite is meant to stay within a third of the two together.
PRODUCT = %w[binding panel platform host driver].freeze
SUITE = %w[test].freeze
ROOT = File.expand_path("..", __dir__)

def counted_lines(path)
  comment = File.extname(path) == ".rb" ? /\A\s*#/ : %r{\A\s*(//|/?\*)}
  File.foreach(path).count { |line| !line.strip.empty? && line !~ comment }
end

def count(dirs)
  Dir.chdir(ROOT) do
    dirs.to_h do |dir|
      files = Dir.glob("#{dir}/**/*.{rb,cpp,h,mm}")
      [dir, files.sum { |f| counted_lines(f) }]
    end
  end
end

product = count(PRODUCT)
suite = count(SUITE)
total = product.values.sum + suite.values.sum
share = 100.0 * suite.values.sum / total
puts "product: #{product.values.sum} (#{product.map { |d, n| "#{d} #{n}" }.join(', ')})"
puts "suite:   #{suite.values.sum} (test)"
puts format("suite share: %.1f %% of product and suite (at most 33.3 %%)", share)
exit(share <= 100.0 / 3 ? 0 : 1)
