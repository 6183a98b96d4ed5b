require "tempfile"

# What the toolkit says: GNUstep writes its warnings and complaints (such as
# "autorelease called without pool", or a text that the layout manager found
# no place for) straight to file descriptor 2. A run sends that to a file and
# counts its lines at the end: any line is a fault of the run.
module ToolkitLines
  # A file for a process's standard error, named after the run.
  def self.file(run)
    Tempfile.new(["optionspanel-#{run}", ".stderr"])
  end

  # This process's standard error into a new file, from before the extensions
  # load; gives the file and the real standard error to restore.
  def self.capture(run)
    file = file(run)
    saved = STDERR.dup
    puts "#{run}: stderr goes to #{file.path} until the end"
    STDERR.reopen(file.path, "w")
    STDERR.sync = true
    [file, saved]
  end

  # Counts the file's lines and hands the first of them on to standard error,
  # so that a crash report or a warning is not lost with the file.
  def self.count(file)
    lines = File.readlines(file.path, chomp: true)
    lines.first(20).each { |line| warn line }
    warn "(#{lines.size - 20} more lines)" if lines.size > 20
    lines.size
  end
end
