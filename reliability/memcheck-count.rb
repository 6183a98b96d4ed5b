# Counts the blocks that valgrind's memcheck reports as definitely lost and
# whose allocation stack passes through this project's code: a frame in
# binding/, panel/, platform/ or driver/, or in one of the two extensions.
#
#   ruby reliability/memcheck-count.rb ROOT LOG... [--show]
#
# Prints the count of blocks; --show also prints each such loss record.
require_relative "project_code"

root = File.expand_path(ARGV.shift)
show = ARGV.delete("--show")
project = project_code(root)

blocks = 0
ARGV.each do |log|
  record = nil
  File.foreach(log) do |line|
    body = line.sub(/\A==\d+==\s?/, "")
    if body =~ /\A[\d,]+ (?:\([\d,]+ direct, [\d,]+ indirect\) )?bytes in ([\d,]+) blocks are definitely lost/
      record = { blocks: Regexp.last_match(1).delete(",").to_i, lines: [body] }
    elsif record && body.strip.empty?
      if record[:lines].any? { |l| l.match?(project) }
        blocks += record[:blocks]
        puts record[:lines].join if show
      end
      record = nil
    elsif record
      record[:lines] << body
    end
  end
end
puts blocks
