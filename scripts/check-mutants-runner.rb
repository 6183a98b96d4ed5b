# The test suite as `make test` runs it, stopping at the first failing test:
# one failure is enough to kill a mutant, and the rest would only cost time.
require "minitest"

module Minitest
  # Reports the first failure or error and ends the process at once.
  class StopAtFirstFailure < AbstractReporter
    def record(result)
      return if result.passed? || result.skipped?

      $stdout.puts "\ncheck-mutants: first failure: #{result.class_name}##{result.name}: " \
                   "#{result.failure.message.lines.first.to_s.strip}"
      $stdout.flush
      exit!(1)
    end
  end

  def self.plugin_stop_at_first_failure_init(_options)
    reporter << StopAtFirstFailure.new
  end
end
Minitest.extensions << "stop_at_first_failure"

Dir["test/test_*.rb"].sort.each { |f| require File.expand_path(f) }
