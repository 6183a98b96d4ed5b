# frozen_string_literal: true

# Memory of this process and every process it started, read from /proc: a web
# view draws in helper processes of its own, and their memory is the dialog's.
module Bench
  module ProcessMemory
    module_function

    def tree(pid = Process.pid)
      children = Dir.glob("/proc/#{pid}/task/*/children").flat_map { |f| File.read(f).split }
      [pid] + children.flat_map { |child| tree(Integer(child)) }
    rescue Errno::ENOENT, Errno::ESRCH
      []
    end

    def status_kib(pid, field)
      line = File.foreach("/proc/#{pid}/status").find { |l| l.start_with?("#{field}:") }
      line ? line.split[1].to_i : 0
    rescue Errno::ENOENT, Errno::ESRCH
      0
    end

    def tree_rss_kib = tree.sum { |pid| status_kib(pid, "VmRSS") }
    def tree_peak_kib = tree.sum { |pid| status_kib(pid, "VmHWM") }
  end
end
