# Counts the reports that AddressSanitizer and UndefinedBehaviorSanitizer wrote
# to their log files, split into those whose stack passes through this
# project's code (binding/, panel/, platform/, driver/ or one of the two
# extensions) and all others.
#
#   ruby reliability/sanitizer-count.rb ROOT LOG... [--show]
#
# Prints "<in project code> <elsewhere>"; --show also prints each report.
require_relative "project_code"

root = File.expand_path(ARGV.shift)
show = ARGV.delete("--show")
project = project_code(root)
start = /==\d+==ERROR: |: runtime error: |Sanitizer: CHECK failed|==\d+==WARNING: .*Sanitizer/

reports = []
ARGV.each do |log|
  File.foreach(log) do |line|
    if line.match?(start)
      reports << [line]
    elsif reports.any?
      reports.last << line
    end
  end
end
in_project, elsewhere = reports.partition { |lines| lines.any? { |l| l.match?(project) } }
(show ? reports : []).each { |lines| puts lines.join, "" }
puts "#{in_project.size} #{elsewhere.size}"
