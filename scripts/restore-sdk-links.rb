#!/usr/bin/env ruby
# Turns the symbolic links of an SDK that a git repository stored as small
# text files (the link's target as the file's only line, no newline) back into
# links, for scripts/check-macos.sh. A target may be relative to the file or
# an absolute path on the machine the SDK was copied from, which is taken
# relative to the SDK's root from its ".../MacOSX.sdk/" part on.
#
#   ruby scripts/restore-sdk-links.rb /work/sdk/MacOSX10.13.sdk
require "find"
require "pathname"

root = ARGV[0] or abort("usage: #{$PROGRAM_NAME} SDK_DIR")
root = File.expand_path(root)

def link_target(root, file)
  return nil if File.symlink?(file) || File.size(file) > 1024 || File.size(file).zero?
  text = File.binread(file)
  return nil if text =~ /[\n\0]/ || text !~ %r{\A[\w.+@/ -]+\z}
  if text =~ %r{MacOSX[\d.]*\.sdk/(.*)\z}
    File.join(root, Regexp.last_match(1))
  elsif text.start_with?("/")
    nil
  else
    File.expand_path(text, File.dirname(file))
  end
end

# Links to links resolve only once their target is a link again: repeat until
# a pass changes nothing.
total = 0
loop do
  changed = 0
  Find.find(root) do |file|
    next unless File.file?(file) && !File.symlink?(file)
    target = link_target(root, file)
    next unless target && target != file && File.exist?(target)
    relative = Pathname.new(target).relative_path_from(Pathname.new(File.dirname(file))).to_s
    File.delete(file)
    File.symlink(relative, file)
    changed += 1
  end
  total += changed
  break if changed.zero?
end
puts("#{total} links restored in #{root}")
