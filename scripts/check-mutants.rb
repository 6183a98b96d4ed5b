# Mutation check of the suite: makes simple faults in the extension's
# behaviour (binding/, panel/, platform/), builds each, runs the test suite
# against it and reports the faults that no test noticed.
#
#   ruby scripts/check-mutants.rb [--quick | --count N] [--key K] [--list]
#
# Each mutant changes one place: a comparison or a logical operator flipped,
# a boolean made its opposite, a negation dropped, an integer constant moved by
# one, or a call statement dropped. Frame and other geometry numbers are left
# to the layout tests, which judge them as a user sees them. Every choice comes
# from the replay key K, so `--key K` repeats a run exactly.
#
# The work happens in build-mutants/: a copy of the sources and a build
# directory that later runs reuse, so each mutant rebuilds incrementally. The
# checkout itself is never written, so an interrupted run leaves it as it was.
require "digest"
require "fileutils"
require "optparse"
require "rbconfig"

module Mutants
  ROOT = File.expand_path("..", __dir__)
  KNOWN_FILE = File.join(ROOT, "scripts", "known-survivors")
  RUNNER = "scripts/check-mutants-runner.rb".freeze
  MUTATED_DIRS = %w[binding panel platform].freeze
  SOURCE_PATTERN = /\.(cpp|h|mm)\z/.freeze
  # The construction of the tabs is all geometry: its numbers are the layout's.
  LAYOUT_FILES = %w[panel/image_tab.mm panel/environment_tab.mm panel/layout.mm platform/tab_view.mm].freeze
  # Calls whose numbers are geometry wherever they are written.
  GEOMETRY_CALLS = %w[NSMakeRect NSMakeSize NSMakePoint NSInsetRect NSOffsetRect].freeze
  GEOMETRY_SELECTOR = /FontOfSize\z/.freeze
  QUICK_COUNT = 6
  FULL_COUNT = 100
  BUILT_PRODUCTS = %w[OptionsPanel.so OptionsPanelDriver.so velmar-host].freeze
  # The suite is bounded by this many times its unmutated duration (a mutant
  # may make it hang), and never less than the minimum.
  TIMEOUT_FACTOR = 4
  MIN_TIMEOUT = 120
  PASS_PERCENT = 90

  FLIPPED = {
    "==" => "!=", "!=" => "==", "<" => ">=", ">=" => "<", ">" => "<=", "<=" => ">",
    "&&" => "||", "||" => "&&",
    "true" => "false", "false" => "true", "YES" => "NO", "NO" => "YES",
    "Qtrue" => "Qfalse", "Qfalse" => "Qtrue"
  }.freeze
  BINARY_OPERATORS = %w[== != < >= > <= && ||].freeze
  KEYWORDS = %w[return if else for while do switch case default break continue goto throw
                delete new typedef using namespace static const constexpr auto struct class
                enum template typename sizeof].freeze
  CONTROL_HEADS = %w[if while for switch].freeze
  PUNCTUATORS = %w[>>= <<= ... ->* :: -> ++ -- << >> <= >= == != && || += -= *= /= %= &= |= ^=].freeze
end

# One token of C, C++ or Objective-C source; comments, string and character
# literals and preprocessor lines are skipped, so nothing in them is mutated.
Token = Struct.new(:kind, :text, :start, :line) do
  def stop
    start + text.size
  end
end

module Lexer
  SKIPPED = [
    %r{//[^\n]*}, %r{/\*.*?\*/}m, /@?"(?:\\.|[^"\\\n])*"/, /'(?:\\.|[^'\\\n])*'/
  ].freeze

  def self.tokens(source)
    tokens = []
    pos = 0
    line = 1
    line_start = true
    while pos < source.size
      char = source[pos]
      if char == "\n"
        line += 1
        line_start = true
        pos += 1
        next
      end
      if char =~ /\s/
        pos += 1
        next
      end
      if line_start && char == "#"
        text = source[pos..][/\A(?:\\\n|[^\n])*/]
        line += text.count("\n")
        pos += text.size
        next
      end
      line_start = false
      skipped = SKIPPED.map { |re| source.match(/\G#{re}/, pos) }.compact.first
      if skipped
        line += skipped[0].count("\n")
        pos += skipped[0].size
        next
      end
      kind, text = next_token(source, pos)
      tokens << Token.new(kind, text, pos, line)
      pos += text.size
    end
    tokens
  end

  def self.next_token(source, pos)
    if (m = source.match(/\G[A-Za-z_]\w*/, pos))
      [:name, m[0]]
    elsif (m = source.match(/\G\.?\d(?:[eEpP][+-]|[\w.])*/, pos))
      [:number, m[0]]
    else
      punct = Mutants::PUNCTUATORS.find { |p| source[pos, p.size] == p }
      [:punct, punct || source[pos]]
    end
  end
end

# The places in one file where a mutant can be made.
class SiteFinder
  Site = Struct.new(:file, :line, :start, :stop, :replacement, :kind)

  def initialize(file, source)
    @file = file
    @source = source
    @tokens = Lexer.tokens(source)
    @matching = matching_brackets
  end

  def sites
    token_sites + statement_sites
  end

  private

  def token_sites
    geometry = geometry_ranges
    @tokens.each_with_index.flat_map do |token, i|
      if Mutants::FLIPPED.key?(token.text)
        flip_site(token)
      elsif token.text == "!"
        [site(token, token.start, token.stop, "", "negation dropped")]
      elsif token.kind == :number && !geometry.any? { |r| r.cover?(i) }
        constant_sites(token)
      else
        []
      end
    end
  end

  def flip_site(token)
    if Mutants::BINARY_OPERATORS.include?(token.text)
      # clang-format spaces binary operators and not template brackets or `T &&`.
      return [] unless spaced?(token)
    elsif token.kind != :name
      return []
    end
    [site(token, token.start, token.stop, Mutants::FLIPPED[token.text], "flipped")]
  end

  def constant_sites(token)
    return [] if Mutants::LAYOUT_FILES.include?(@file)

    m = token.text.match(/\A(\d+)([uUlL]*)\z/)
    return [] unless m && (m[1] == "0" || !m[1].start_with?("0"))

    value = m[1].to_i
    [value + 1, value - 1].select { |v| v >= 0 }.map do |v|
      site(token, token.start, token.stop, "#{v}#{m[2]}", "constant changed")
    end
  end

  def site(token, start, stop, replacement, kind)
    Site.new(@file, token.line, start, stop, replacement, kind)
  end

  def spaced?(token)
    @source[token.start - 1] =~ /\s/ && @source[token.stop] =~ /\s/
  end

  # Token indexes inside geometry calls and after a font size selector.
  def geometry_ranges
    @tokens.each_with_index.filter_map do |token, i|
      nxt = @tokens[i + 1]
      if Mutants::GEOMETRY_CALLS.include?(token.text) && nxt&.text == "("
        (i + 1)..@matching.fetch(i + 1, i + 1)
      elsif token.text =~ Mutants::GEOMETRY_SELECTOR && nxt&.text == ":"
        (i + 2)..(i + 2)
      end
    end
  end

  def matching_brackets
    pairs = { "(" => ")", "[" => "]", "{" => "}" }
    stack = []
    @tokens.each_with_index.with_object({}) do |(token, i), matching|
      if pairs.key?(token.text)
        stack << i
      elsif pairs.value?(token.text) && !stack.empty?
        open = stack.pop
        matching[open] = i
        matching[i] = open
      end
    end
  end

  # Call statements in function bodies: `name(...);`, `a::b.c->d(...);` or `[receiver message];`.
  def statement_sites
    statement_starts.filter_map do |i|
      stop = call_statement_end(i)
      next unless stop

      first = @tokens[i]
      Site.new(@file, first.line, first.start, @tokens[stop].stop, "{}", "call dropped")
    end
  end

  def call_statement_end(i)
    token = @tokens[i]
    if token.text == "["
      close = @matching[i]
      return close + 1 if close && @tokens[close + 1]&.text == ";"
    elsif token.kind == :name && !Mutants::KEYWORDS.include?(token.text)
      j = i
      j += 2 while %w[:: . ->].include?(@tokens[j + 1]&.text) && @tokens[j + 2]&.kind == :name
      close = @tokens[j + 1]&.text == "(" && @matching[j + 1]
      return close + 1 if close && @tokens[close + 1]&.text == ";"
    end
    nil
  end

  # Indexes of tokens that begin a statement inside a function or method body.
  def statement_starts
    code_braces = {}
    control_closes = {}
    starts = []
    enclosing = []
    @tokens.each_with_index do |token, i|
      prev = i.positive? ? @tokens[i - 1] : nil
      if enclosing.last && code_braces[enclosing.last] && statement_boundary?(prev, i, control_closes)
        starts << i
      end
      case token.text
      when "{"
        code_braces[i] = code_brace?(i)
        enclosing << i
      when "}"
        enclosing.pop
      when "("
        control_closes[@matching[i]] = true if prev && Mutants::CONTROL_HEADS.include?(prev.text)
      end
    end
    starts
  end

  def statement_boundary?(prev, index, control_closes)
    %w[; { } else do].include?(prev.text) || (prev.text == ")" && control_closes[index - 1])
  end

  # A brace that opens code: a function, lambda or method body or a block of a
  # statement, rather than a namespace, a class or an initializer list.
  def code_brace?(i)
    head_start = i
    head_start -= 1 while head_start.positive? && !%w[; { }].include?(@tokens[head_start - 1].text)
    head = @tokens[head_start...i].map(&:text)
    return true if %w[- +].include?(head[0]) && head[1] == "("

    [")", "]", "else", "do", "try", "const", "override", "noexcept"].include?(head.last) &&
      !head.include?("=") && !%w[namespace struct class enum].include?(head.first)
  end
end

# A mutant: one site applied to its file.
class Mutant
  attr_reader :site, :original

  def initialize(site, original)
    @site = site
    @original = original
  end

  def file
    site.file
  end

  def line
    site.line
  end

  def mutated
    original[0...site.start] + site.replacement + original[site.stop..]
  end

  # What changed, as written: the line before and after, or the dropped statement.
  def from
    if site.kind == "call dropped"
      squeeze(original[site.start...site.stop])
    else
      squeeze(line_at(original))
    end
  end

  def to
    site.kind == "call dropped" ? site.replacement : squeeze(line_at(mutated))
  end

  def describe
    "#{file}:#{line}: #{site.kind}: `#{from}` -> `#{to}`"
  end

  private

  def line_at(text)
    text.lines[line - 1].to_s
  end

  def squeeze(text)
    text.strip.gsub(/\s+/, " ")
  end
end

# Survivors that no test could see, each with its reason.
class KnownSurvivors
  Entry = Struct.new(:file, :from, :to, :why, :sites)

  def initialize(path)
    @entries = File.exist?(path) ? parse(File.read(path)) : []
  end

  def reason(mutant)
    entry = @entries.find { |e| names?(e, mutant) }
    entry&.why
  end

  # The entries that name no mutant the sources can make (their code has
  # gone) or another number than they say (a line written the same in several
  # places; `sites` counts them, 1 if not given): a reason must not excuse a
  # survivor it was not written for.
  def unmatched(mutants)
    @entries.filter_map do |e|
      count = mutants.count { |m| names?(e, m) }
      "#{e.file}: `#{e.from}` -> `#{e.to}` names #{count} mutants, not #{e.sites}" unless count == e.sites
    end
  end

  private

  def names?(entry, mutant)
    entry.file == mutant.file && entry.from == mutant.from && entry.to == mutant.to
  end

  def parse(text)
    text.split(/\n\s*\n/).filter_map do |block|
      fields = block.lines.reject { |l| l.start_with?("#") }.each_with_object({}) do |l, h|
        key, value = l.split(":", 2)
        h[key.strip] = value.to_s.strip if value
      end
      Entry.new(fields["file"], fields["from"], fields["to"], fields["why"], Integer(fields["sites"] || 1)) if fields["file"]
    end
  end
end

# Draws mutants spread evenly over every line that has a site: the k-th pick
# lies about k times the golden ratio along the list of lines, from an offset
# the replay key gives, so any number of picks covers the files in proportion.
class Sampler
  GOLDEN = (Math.sqrt(5) - 1) / 2

  def initialize(sources, key)
    @random = Random.new(key)
    @sources = sources
    sites = sources.flat_map { |file, text| SiteFinder.new(file, text).sites }
    @lines = sites.group_by { |s| [s.file, s.line] }.sort.map(&:last)
  end

  def site_count
    @lines.sum(&:size)
  end

  def mutants
    @lines.flatten.map { |site| Mutant.new(site, @sources[site.file]) }
  end

  def line_count
    @lines.size
  end

  def each
    taken = Array.new(@lines.size, false)
    offset = @random.rand
    @lines.size.times do |k|
      index = ((offset + k * GOLDEN) % 1 * @lines.size).floor
      index = (index + 1) % @lines.size while taken[index]
      taken[index] = true
      choices = @lines[index]
      site = choices[@random.rand(choices.size)]
      mutant = Mutant.new(site, @sources[site.file])
      yield mutant if mutant.mutated != mutant.original
    end
  end
end

# The copy of the sources and its build directory under build-mutants/.
class Workspace
  def initialize(dir, ruby)
    @dir = dir
    @src = File.join(dir, "src")
    @build = File.join(dir, "build")
    @logs = File.join(dir, "logs")
    @ruby = ruby
  end

  def lock
    FileUtils.mkdir_p(@dir)
    @lock = File.open(File.join(@dir, "lock"), File::CREAT | File::RDWR)
    abort "check-mutants: another run is using #{@dir}" unless @lock.flock(File::LOCK_EX | File::LOCK_NB)
  end

  # Brings the copy up to the checkout, writing only the files that differ, so
  # that the build directory stays up to date for everything else.
  def sync(files)
    FileUtils.rm_rf(@logs)
    FileUtils.mkdir_p([@src, @logs])
    files.each do |file|
      from = File.join(Mutants::ROOT, file)
      to = File.join(@src, file)
      next if File.exist?(to) && FileUtils.identical?(from, to)

      FileUtils.mkdir_p(File.dirname(to))
      FileUtils.cp(from, to)
      File.chmod(File.stat(from).mode, to)
    end
    stale = Dir.glob("**/*", File::FNM_DOTMATCH, base: @src).reject do |f|
      File.directory?(File.join(@src, f))
    end - files
    stale.each { |f| File.delete(File.join(@src, f)) }
  end

  def write(file, text)
    File.write(File.join(@src, file), text)
  end

  # Configures the build directory for the copy, as `make build` does.
  def configure
    log = File.join(@logs, "configure.log")
    ok = system("cmake", "-S", @src, "-B", @build, "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
                "-DRUBY_EXECUTABLE=#{@ruby}", out: log, err: log)
    [ok, log]
  end

  def build(name)
    log = File.join(@logs, "#{name}-build.log")
    [system("cmake", "--build", @build, "-j2", out: log, err: log), log]
  end

  def products_digest
    Mutants::BUILT_PRODUCTS.map do |name|
      path = File.join(@build, name)
      File.exist?(path) ? Digest::SHA256.file(path).hexdigest : "-"
    end.join(" ")
  end

  # Runs the suite in a process group of its own; returns :passed or :failed,
  # the log and, for a failure, what failed first: a test, a crash or a hang.
  def run_suite(name, timeout)
    log = File.join(@logs, "#{name}-test.log")
    env = { "BUILD_DIR" => @build }
    command = ["scripts/with-display.sh", @ruby, "-I", @build, "-I", "test", Mutants::RUNNER]
    pid = Process.spawn(env, *command, chdir: @src, out: log, err: [:child, :out], pgroup: true)
    status = wait_for(pid, timeout)
    return [:passed, log] if status&.success?

    [:failed, log, status ? why_failed(status, log) : "a hang: the suite did not finish in #{timeout}s"]
  end

  private

  def wait_for(pid, timeout)
    deadline = Process.clock_gettime(Process::CLOCK_MONOTONIC) + timeout
    loop do
      _, status = Process.wait2(pid, Process::WNOHANG)
      return status if status
      break if Process.clock_gettime(Process::CLOCK_MONOTONIC) > deadline

      sleep 0.2
    end
    stop_group(pid)
    nil
  end

  # TERM lets with-display.sh stop the X server and daemons it started.
  def stop_group(pid)
    %w[TERM KILL].each do |signal|
      Process.kill(signal, -pid)
      sleep 2
    rescue Errno::ESRCH
      break
    end
    Process.wait(pid)
  end

  def why_failed(status, log)
    failure = File.read(log, mode: "rb").force_encoding("UTF-8").scrub[/^check-mutants: first failure: (.*)$/, 1]
    return failure if failure

    # with-display.sh ends with its command's status: 128 + N for signal N.
    code = status.exitstatus.to_i
    signal = code > 128 && Signal.signame(code - 128)
    signal ? "a crash (SIG#{signal}), see #{log}" : "exit status #{code}, see #{log}"
  end
end

class MutationRun
  def initialize(options)
    @options = options
    @ruby = options[:ruby]
    @known = KnownSurvivors.new(Mutants::KNOWN_FILE)
    @workspace = Workspace.new(options[:dir], @ruby)
  end

  def run
    files = checkout_files
    sampler = Sampler.new(sources(files), @options[:key])
    puts "check-mutants: replay key #{@options[:key]}, #{@options[:count]} mutants " \
         "(of #{sampler.site_count} sites on #{sampler.line_count} lines)"
    puts "replay with: ruby scripts/check-mutants.rb --key #{@options[:key]} --count #{@options[:count]}"
    unmatched = @known.unmatched(sampler.mutants)
    abort "check-mutants: each entry of #{Mutants::KNOWN_FILE} must name one mutant:\n  #{unmatched.join("\n  ")}" \
      unless unmatched.empty?
    return list(sampler) if @options[:list]

    @workspace.lock
    @workspace.sync(files)
    baseline
    results = mutate(sampler)
    report(results)
  end

  private

  def checkout_files
    listed = IO.popen(%w[git ls-files -z --cached --others --exclude-standard], chdir: Mutants::ROOT, &:read)
    listed.split("\0").select { |f| File.file?(File.join(Mutants::ROOT, f)) }
  end

  def sources(files)
    files.select { |f| Mutants::MUTATED_DIRS.include?(f.split("/").first) && f =~ Mutants::SOURCE_PATTERN }
         .sort.to_h { |f| [f, File.read(File.join(Mutants::ROOT, f))] }
  end

  def list(sampler)
    n = 0
    sampler.each do |mutant|
      puts mutant.describe
      n += 1
      break if n >= @options[:count]
    end
    0
  end

  def baseline
    started = now
    ok, log = @workspace.configure
    ok, log = @workspace.build("original") if ok
    abort "check-mutants: the unmutated sources do not build; see #{log}" unless ok
    @digest = @workspace.products_digest
    built = now
    outcome, log, failure = @workspace.run_suite("original", 3600)
    abort "check-mutants: the suite fails without mutants: #{failure}; see #{log}" unless outcome == :passed

    @suite_seconds = now - built
    @timeout = [Mutants::MIN_TIMEOUT, (Mutants::TIMEOUT_FACTOR * @suite_seconds).ceil].max
    puts format("unmutated: built in %ds, suite passed in %ds; each mutant's suite is stopped after %ds",
                built - started, @suite_seconds, @timeout)
  end

  def mutate(sampler)
    results = Hash.new { |h, k| h[k] = [] }
    counted = 0
    attempt = 0
    sampler.each do |mutant|
      break if counted >= @options[:count]

      attempt += 1
      started = now
      outcome = try(mutant, attempt)
      results[outcome.first] << [mutant, *outcome.drop(1)]
      counts = %i[killed survived known].include?(outcome.first)
      counted += 1 if counts
      progress = counts ? format("%3d/%d", counted, @options[:count]) : "  not counted"
      puts format("[%s] %s: %s (%ds)", progress, mutant.describe, verdict(outcome), now - started)
    end
    results
  end

  # The mutant is written into the copy only while it is built and tested.
  def try(mutant, attempt)
    @workspace.write(mutant.file, mutant.mutated)
    judge(mutant, attempt)
  ensure
    @workspace.write(mutant.file, mutant.original)
  end

  def judge(mutant, number)
    name = format("%03d", number)
    ok, = @workspace.build(name)
    return [:unbuilt] unless ok
    return [:unchanged] if @workspace.products_digest == @digest

    outcome, log, failure = @workspace.run_suite(name, @timeout)
    return [:killed, failure] if outcome == :failed

    why = @known.reason(mutant)
    why ? [:known, why] : [:survived, log]
  end

  def verdict(outcome)
    case outcome.first
    when :killed then "killed: #{outcome[1]}"
    when :known then "survived, known: #{outcome[1]}"
    when :survived then "SURVIVED"
    when :unbuilt then "does not build"
    when :unchanged then "the compiled code is the same"
    end
  end

  def report(results)
    killed, survived, known = results.values_at(:killed, :survived, :known).map(&:size)
    counted = killed + survived + known
    puts
    unless results[:survived].empty?
      puts "Survivors:"
      results[:survived].each { |mutant, _| puts "  #{mutant.describe}" }
    end
    unless results[:known].empty?
      puts "Known survivors (no test can see them):"
      results[:known].each { |mutant, why| puts "  #{mutant.describe}\n    #{why}" }
    end
    percent = counted - known > 0 ? 100.0 * killed / (counted - known) : 100.0
    puts format("Score: %d of %d mutants killed (%.1f%%), not counting %d known survivor(s); " \
                "%d did not build and %d left the compiled code unchanged (not counted).",
                killed, counted - known, percent, known, results[:unbuilt].size, results[:unchanged].size)
    puts "replay with: ruby scripts/check-mutants.rb --key #{@options[:key]} --count #{@options[:count]}"
    percent >= Mutants::PASS_PERCENT ? 0 : 1
  end

  def now
    Process.clock_gettime(Process::CLOCK_MONOTONIC)
  end
end

def parse_options(argv)
  options = { count: Mutants::FULL_COUNT, ruby: RbConfig.ruby,
              dir: File.join(Mutants::ROOT, "build-mutants") }
  OptionParser.new do |o|
    o.banner = "usage: ruby scripts/check-mutants.rb [--quick | --count N] [--key K] [--list]"
    o.on("--quick", "#{Mutants::QUICK_COUNT} mutants, a few minutes") { options[:count] = Mutants::QUICK_COUNT }
    o.on("--count N", Integer, "number of mutants that build (default #{Mutants::FULL_COUNT})") do |n|
      options[:count] = n
    end
    o.on("--key K", Integer, "replay key of an earlier run") { |k| options[:key] = k }
    o.on("--ruby PATH", "the Ruby to build against and test with") { |r| options[:ruby] = r }
    o.on("--list", "print the mutants that would be tried, build nothing") { options[:list] = true }
  end.parse!(argv)
  abort "check-mutants: --count N needs N > 0" unless options[:count].positive?
  options[:key] ||= Random.urandom(4).unpack1("N")
  options
end

$stdout.sync = true
exit MutationRun.new(parse_options(ARGV)).run
