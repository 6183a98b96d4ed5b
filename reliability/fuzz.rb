# Randomized fuzzer for Velmar::OptionsPanelWindow: a long run of script calls
# with arguments of every kind, mixed with user actions through the driver,
# with the panel's invariants checked after every step.
#
#   ruby -I build reliability/fuzz.rb --steps N [--replay K]
#
# Every choice comes from one Random started from the replay key K, so a
# failing run is replayed exactly by the command it prints. The steps run in a
# child process, so a crash or a hang is still reported with its step; each
# line that the toolkit prints there fails the run too.
require "io/wait"
require "json"
require "optparse"
require "rbconfig"
require_relative "toolkit_lines"

module Fuzz
  REPORT_FD_VARIABLE = "OPTIONSPANEL_FUZZ_REPORT_FD"
  # How long one step may take before the run counts as hung; a step that
  # handles megabyte texts takes well under a second.
  STEP_TIME_LIMIT = 300

  def self.options(argv)
    options = {}
    OptionParser.new do |o|
      o.banner = "usage: ruby -I build #{$PROGRAM_NAME} --steps N [--replay K]"
      o.on("--steps N", Integer, "number of steps") { |n| options[:steps] = n }
      o.on("--replay K", Integer, "replay key of an earlier run") { |k| options[:key] = k }
    end.parse!(argv)
    abort "fuzz: --steps N (N > 0) is required" unless options[:steps]&.positive?
    options[:key] ||= Random.urandom(4).unpack1("N")
    options
  end
end

# ---------------------------------------------------------------------------
# The parent: starts the worker, follows its steps, and reports the outcome.
# It never loads the extension, so it outlives whatever the panel does.
# ---------------------------------------------------------------------------
class FuzzSupervisor
  def initialize(steps, key)
    @steps = steps
    @key = key
  end

  def run
    puts "fuzz: #{@steps} steps, replay key #{@key}"
    reader, writer = IO.pipe
    # What the worker's toolkit says, counted once it is done.
    said = ToolkitLines.file("fuzz")
    pid = Process.spawn({ Fuzz::REPORT_FD_VARIABLE => "3" }, *worker_command, 3 => writer, err: said.path)
    writer.close
    outcome = follow(reader, pid)
    finish(outcome, ToolkitLines.count(said))
  end

  private

  def build_dirs
    dirs = $LOAD_PATH.select { |d| File.exist?(File.join(d, "OptionsPanel.so")) }
    abort "fuzz: OptionsPanel.so is not on the load path; run with -I build" if dirs.empty?
    dirs
  end

  def worker_command
    flags = build_dirs.flat_map { |d| ["-I", d] }
    [RbConfig.ruby, *flags, File.expand_path(__FILE__), "--steps", @steps.to_s,
     "--replay", @key.to_s]
  end

  # Reads the worker's reports until it is done, fails, dies or stops answering.
  def follow(reader, pid)
    last = { "step" => 0, "action" => "starting the panel" }
    loop do
      return hung(pid, last) unless reader.wait_readable(Fuzz::STEP_TIME_LIMIT)

      line = reader.gets
      return last.merge("broke" => death_of(pid)) unless line

      report = JSON.parse(line)
      return report.merge("status" => Process.wait2(pid).last) if report["done"]
      return report.tap { Process.wait(pid) } if report["broke"]

      last = report
    end
  end

  def hung(pid, last)
    Process.kill("KILL", pid)
    Process.wait(pid)
    last.merge("broke" => "no answer within #{Fuzz::STEP_TIME_LIMIT} s (hung)")
  end

  def death_of(pid)
    status = Process.wait2(pid).last
    return "the process died (signal #{Signal.signame(status.termsig)})" if status.signaled?

    "the process died (status #{status.exitstatus})"
  end

  # A line from the toolkit fails the run as a broken step does.
  def finish(outcome, lines)
    if outcome["done"] && outcome["status"].success?
      puts "fuzz: the toolkit printed #{lines} lines, shown above; replay: #{replay_command}" if lines.positive?
      puts "fuzz: #{@steps} steps, 0 failures, #{lines} toolkit lines"
      exit(lines.zero? ? 0 : 1)
    end
    outcome["broke"] ||= "the worker ended with #{outcome['status']} after its last step"
    report_failure(outcome, lines)
    exit 1
  end

  def report_failure(outcome, lines)
    puts "fuzz: step #{outcome['step']} failed"
    puts "  action: #{outcome['action']}"
    puts "  broke:  #{outcome['broke']}"
    puts "  replay: #{replay_command}"
    puts "fuzz: #{outcome['step']} steps, 1 failures, #{lines} toolkit lines"
  end

  def replay_command
    build = build_dirs.first
    build = build.delete_prefix("#{Dir.pwd}/") if build.start_with?("#{Dir.pwd}/")
    "ruby -I #{build} #{$PROGRAM_NAME} --steps #{@steps} --replay #{@key}"
  end
end

# ---------------------------------------------------------------------------
# Argument values of every kind the fuzzer hands to script methods.
# ---------------------------------------------------------------------------

# Objects whose inspect is the same in every run, so a replay prints the same actions.
class Opaque
  def initialize(label) = @label = label
  def inspect = "#<#{@label}>"
end

# Converts implicitly, as a script's own value classes may.
class StringLike < Opaque
  def initialize(text)
    super("to_str #{text.inspect}")
    @text = text
  end

  def to_str = @text
end

class IntegerLike < Opaque
  def initialize(number)
    super("to_int #{number}")
    @number = number
  end

  def to_int = @number
end

class BrokenStringLike < Opaque
  def to_str = 42
end

class FuzzArguments
  MIB = 1 << 20
  # Built once: a run hands the same few megabyte strings out many times.
  HUGE = ["x" * MIB, "é" * (MIB / 2), "✓" * (MIB / 3), ("\xFF" * MIB).b,
          "Draft|#{'y' * MIB}"].map(&:freeze).freeze
  WORDS = {
    size_mode: %w[viewport fixed panorama], format: %w[pnga png jpg hdr],
    save_mode: %w[model custom], background: %w[default sky sky2],
    preset: %w[Default Draft Final Café], text: ["Render Options", "Titel ✓", "t"],
    folder: ["/renders", "C:\\Out\\Renders", "/tmp/Render Out", "~/Bilder/Über"],
    path: ["C:\\Renders\\Out", "/already/forward", "a\\b\\\\c", "\\\\server\\share"]
  }.freeze
  PRESET_NAMES = ["Default", "Draft", "Final", "Café", "", " Draft ", "Night ✓"].freeze
  SIZES = [[230, 150], [640, 480], [1024, 768], [2048, 1536], [3076, 2034], [4076, 3304],
           [852, 480], [1600, 900], [1920, 1080], [0, 0], [800, 600], [-5, 10]].freeze
  INT32_EDGES = [2**31 - 1, -2**31, 2**30, 2**30 - 1, -1, 0].freeze
  BEYOND_32 = [2**31, -2**31 - 1, 2**32, 2**32 + 1, -2**32, 2**40].freeze
  BIGNUMS = [2**63, 2**64, -2**63 - 1, 2**100, -2**70].freeze
  FLOATS = [0.0, -0.0, 49.9, 0.99, -0.7, 1e10, -1e10, 2_147_483_647.5, Float::NAN,
            Float::INFINITY, -Float::INFINITY].freeze
  # Valid UTF-8 that text handling tends to trip over.
  ODD_TEXTS = ["\u{FEFF}lead", "tail\u{FEFF}", "\u{FFFE}\u{FFFF}", "e\u0301", "\u202Eevil",
               "😀|🏳️‍🌈", "\u{10FFFF}", "\u0085\u2028", "日本語", "\t \r\n"].freeze
  KINDS = %i[valid valid valid valid wrong_case empty invalid_utf8 nul huge odd int32
             beyond32 bignum float nil true object].freeze

  def initialize(rng, texts)
    @rng = rng
    @texts = texts
  end

  def pick(list) = list[@rng.rand(list.size)]

  # A value for a parameter of the given sort, of a randomly chosen kind.
  def value(sort)
    kind = pick(KINDS)
    kind == :valid ? valid(sort) : hostile(kind, sort)
  end

  def valid(sort)
    case sort
    when :bool then pick([true, false])
    when :dimension then @rng.rand(4).positive? ? pick(SIZES).first : @rng.rand(-100..5000)
    when :viewport then @rng.rand(-10..4000)
    when :slider then @rng.rand(-20..120)
    when :presets then Array.new(@rng.rand(1..5)) { pick(PRESET_NAMES) }.join("|")
    when :table then pick([@texts, {}, @texts.merge("opt-ok-btn-title" => "Go")])
    when :any then hostile(pick(KINDS - [:valid]), :text)
    else pick(WORDS.fetch(sort))
    end
  end

  def hostile(kind, sort)
    case kind
    when :wrong_case then wrong_case(sort)
    when :empty then +""
    when :invalid_utf8 then invalid_utf8
    when :nul then "#{valid_text(sort)}\0#{pick(%w[x fixed sky])}"
    when :huge then pick(HUGE)
    when :odd then pick(ODD_TEXTS)
    else number_or_object(kind)
    end
  end

  private

  def number_or_object(kind)
    case kind
    when :int32 then pick(INT32_EDGES)
    when :beyond32 then pick(BEYOND_32)
    when :bignum then pick(BIGNUMS) + @rng.rand(3)
    when :float then @rng.rand(3).zero? ? @rng.rand * 200 - 50 : pick(FLOATS)
    when :nil then nil
    when :true then true
    else pick(objects)
    end
  end

  # A word to misspell or cut: parameters that take anything borrow plain text's words.
  def valid_text(sort)
    word = valid(sort == :any ? :text : sort)
    word.is_a?(String) ? word : word.to_s
  end

  def wrong_case(sort)
    word = valid_text(sort)
    changed = pick([word.upcase, word.capitalize, word.swapcase, "#{word} "])
    changed == word ? "#{word.upcase}X" : changed
  end

  def invalid_utf8
    bytes = Array.new(@rng.rand(1..12)) { @rng.rand(256) }.pack("C*")
    text = pick(["sky#{bytes}", "#{bytes}png", bytes, "\xC0\xAF\xED\xA0\x80\xF4\x90"])
    @rng.rand(2).zero? ? text.b : text.dup.force_encoding(Encoding::UTF_8)
  end

  def objects
    @objects ||= [Opaque.new("object"), :fixed, [1, "sky"], { "mode" => "fixed" }, (1..3),
                  StringLike.new("sky"), StringLike.new("fixed"), StringLike.new("pnga"),
                  IntegerLike.new(640), IntegerLike.new(2**40),
                  BrokenStringLike.new("to_str gives 42"), Rational(7, 2), Complex(3, 0),
                  Complex(1, 2), Object].freeze
  end
end

# What the binding makes of script values, to know what the panel must show.
module PanelText
  # A String argument: its bytes up to the first NUL, every byte outside a
  # valid UTF-8 sequence replaced by U+FFFD.
  def self.of(value)
    bytes = String.try_convert(value).b
    bytes = bytes.byteslice(0, bytes.index("\0")) if bytes.include?("\0")
    bytes.force_encoding(Encoding::UTF_8).scrub { |bad| "\u{FFFD}" * bad.bytesize }
  end

  # An Integer argument, as the interpreter converts it (a Float is truncated).
  def self.int32(value) = value.is_a?(Integer) ? value : value.to_int

  def self.utf8?(text) = text.encoding == Encoding::UTF_8 && text.valid_encoding?

  # Short enough for one line: long strings, and the arrays that hold them, are cut.
  def self.describe(value)
    return "[#{value.map { |v| describe(v) }.join(', ')}]" if value.is_a?(Array)
    return value.inspect unless value.is_a?(String) && value.bytesize > 40

    "#{value.byteslice(0, 12).inspect}...(#{value.bytesize} bytes)"
  end
end

# ---------------------------------------------------------------------------
# The worker: runs the steps and checks the panel after each one.
# ---------------------------------------------------------------------------

# Hears every event; registered once, since the observer list only grows.
class FuzzRecorder
  EVENTS = %w[preset_changed output_changed environment_changed options_changed
              options_changed_show_render_all close].freeze
  attr_reader :events

  def initialize = @events = []
  def names = @events.map(&:first)
  EVENTS.each { |event| define_method(event) { |payload| @events << [event, payload] } }
end

# A step: how it reads, what it does, the control whose enabled state decides
# whether the driver may refuse it, what it must leave behind, and whether it
# must be refused.
FuzzAction = Struct.new(:text, :call, :gate, :check, :hostile, keyword_init: true)

# Raised by a check when the panel is not as the rules say.
class FuzzBroken < StandardError; end

module FuzzPanel
  RADIO_GROUPS = %i[size_mode format save_location background].freeze
  SIZE_MODES = %w[viewport fixed panorama].freeze
  BOXES = { spherical_point_lights: :spherical_point_lights, information_bar: :information_bar,
            clay: :clay, caching: :caching, caustic: :caustics,
            translucent_color: :translucent_color, automatic_materials: :automatic_materials }.freeze
  # Script methods and the sort of each argument. `observe` is left out: the
  # observer list only grows, and the recorder is registered once.
  API = {
    show: [], close: [], "text=": [:text], "preset=": [:preset], populate_presets: [:presets],
    set_output_dimensions: %i[size_mode dimension dimension viewport viewport],
    "output_format=": [:format], set_environment_background: [:background],
    set_environment_brightness: [:slider], set_environment_contrast: [:slider],
    set_output_format: %i[any any any], set_output_directory: %i[save_mode folder],
    output_directory: [:path], "hide_render_all=": [:any], new: [:table],
    **BOXES.keys.to_h { |o| [:"set_environment_#{o}", [:bool]] }
  }.freeze

  def control(name) = @driver.control(name)
  def cells(name) = control(name)[:cells].map { |c| c[:state] }
  def text_of(name) = control(name)[:text]
  def one_on(count, index) = Array.new(count) { |i| i == index ? 1 : 0 }
  def broken(message) = raise(FuzzBroken, message)

  def expect(what, got, want)
    return if got == want

    if got.is_a?(Array) && want.is_a?(Array) && got.size == want.size
      index = got.each_index.find { |i| got[i] != want[i] }
      what, got, want = "#{what}[#{index}]", got[index], want[index]
    end
    broken("#{what} is #{PanelText.describe(got)}, expected #{PanelText.describe(want)}")
  end

  def expect_no_events
    names = @recorder.names
    broken("sent #{names.inspect} where no event was due") unless names.empty?
  end
end

# Script calls, chosen at random with arguments of every kind.
module FuzzScriptActions
  private

  def api_action
    return call_api(:show, []) if !@state[:visible] && @rng.rand(4).zero?
    return interpreter_action if @rng.rand(200).zero?

    name = FuzzPanel::API.keys[@rng.rand(FuzzPanel::API.size)]
    call_api(name, arguments(name))
  end

  def arguments(name)
    sorts = FuzzPanel::API.fetch(name)
    return Array.new(wrong_arity(sorts.size)) { @args.value(:any) } if @rng.rand(25).zero?
    return preset_size_arguments if name == :set_output_dimensions && @rng.rand(3).zero?

    sorts.map { |sort| sort == :preset ? preset_name : @args.value(sort) }
  end

  def wrong_arity(arity)
    counts = (0..arity + 2).to_a - [arity]
    counts[@rng.rand(counts.size)]
  end

  # A fixed size that names a combo item, so that the setter selects it itself.
  def preset_size_arguments
    width, height = FuzzArguments::SIZES[@rng.rand(FuzzArguments::SIZES.size)]
    ["fixed", width, height, @rng.rand(0..2000), @rng.rand(0..2000)]
  end

  def preset_name
    items = control(:preset)[:items]
    return @args.value(:preset) if items.empty? || @rng.rand(3).zero?

    items[@rng.rand(items.size)]
  end

  def call_api(name, args)
    receiver = name == :new ? "Velmar::OptionsPanelWindow" : "panel"
    text = "#{receiver}.#{name}(#{args.map { |a| PanelText.describe(a) }.join(', ')})"
    call = if name == :new
             -> { Velmar::OptionsPanelWindow.new(*args) }
           else
             -> { @panel.public_send(name, *args) }
           end
    FuzzAction.new(text: text, call: call,
                   check: ->(error, before) { api_check(name, args, error, before) })
  end

  # The interpreter collects (and moves) objects at any time in a host too.
  def interpreter_action
    how = @rng.rand(2).zero? ? :start : :compact
    FuzzAction.new(text: "GC.#{how}", call: -> { GC.public_send(how) })
  end
end

# User actions through the driver, only on what a user can reach: the header
# and the tab that is showing.
module FuzzUserActions
  TYPED = ["0", "1", "7", "19", "21", "640", "1921", "540", "-", "-4", "x", "px", " ", "✓",
           "é", "😀", "99999999999", "1073741824", "2147483648"].freeze

  private

  def user_action
    choices = header_actions + (@state[:tab].zero? ? image_actions : environment_actions)
    roll = @rng.rand(choices.sum(&:first))
    choices.each do |weight, make|
      return make.call if roll < weight

      roll -= weight
    end
  end

  def header_actions
    [[4, -> { ok_action }], [2, -> { close_action(:click, :close) }],
     [2, -> { close_action(:close_box) }], [4, -> { tab_action }], [3, -> { preset_pick }],
     [1, -> { call_api(:show, []) }], [1, -> { driver_action(:process_events) }],
     [2, -> { hostile_driver_action }], [8, -> { key_action }]]
  end

  def image_actions
    [[6, -> { cell(:size_mode, 3) }], [4, -> { cell(:format, 3) }],
     [4, -> { cell(:save_location, 2) }], [2, -> { driver_action(:click, :transparent_background) }],
     [6, -> { size_pick }], [14, -> { edit }], [1, -> { folder_chooser }]]
  end

  def environment_actions
    boxes = FuzzPanel::BOXES.values - [:caching] # the caching box is never on screen
    # Each button click waits out the toolkit's highlight (about 0.1 s), so
    # boxes that no rule ties to anything else get a small share.
    [[4, -> { driver_action(:click, boxes[@rng.rand(boxes.size)]) }],
     [4, -> { cell(:background, 3) }], [2, -> { slide_action }], [1, -> { reset_action }]]
  end

  # A drag let go anywhere, past either end too: the slider stops at its end.
  def slide_action
    slider = %i[intensity exposure][@rng.rand(2)]
    value = @rng.rand(-20..120)
    check = lambda do |error, _|
      expect("#{slider} value", control(slider)[:value], value.clamp(0, 100)) unless error
    end
    driver_action(:slide, slider, value, check: quiet(check))
  end

  # A driver call; a gate is the control named first, which the driver refuses when disabled.
  def driver_action(method, *args, gate: args.first.is_a?(Symbol) ? args.first : nil, check: nil)
    text = "Driver.#{method}#{args.empty? ? '' : "(#{args.map(&:inspect).join(', ')})"}"
    FuzzAction.new(text: text, call: -> { @driver.public_send(method, *args) }, gate: gate,
                   check: check)
  end

  def cell(name, count)
    on_click = ->(error, _) { @fields_locked = false unless error } if name == :size_mode
    driver_action(:click_cell, name, @rng.rand(count), check: quiet(on_click))
  end

  def size_pick
    index = @rng.rand(10)
    driver_action(:pick, :size, index,
                  check: quiet(->(error, _) { @fields_locked = !index.zero? unless error }))
  end

  def preset_pick
    count = control(:preset)[:items].size
    return tab_action if count.zero?

    driver_action(:pick, :preset, @rng.rand(count))
  end

  def tab_action = driver_action(:choose_tab, @rng.rand(2))

  # A person's keys: moving the focus, pressing what has it, switching tabs,
  # the clipboard keys, and typing into the focused field.
  KEYS = %w[Tab Tab shift+Tab ctrl+Tab ctrl+shift+Tab space Return Escape Up Down Left Right
            shift+Left shift+Right ctrl+a ctrl+c ctrl+x ctrl+v ctrl+z shift+Insert ctrl+Insert
            shift+Delete cmd+v cmd+q BackSpace Delete 7 0 x].freeze
  # What waits for a person: an open list (Down or Space on it), the folder chooser.
  WAITING = { "size" => %w[Down space], "preset" => %w[Down space], "choose_folder" => %w[space Return] }.freeze

  def key_action
    focused = @driver.focused.to_s
    key = KEYS[@rng.rand(KEYS.size)]
    key = "Tab" if WAITING.fetch(focused, []).include?(key)
    # A key may press OK or Close: its events are not foreseen. On the size
    # mode group it may choose a mode, the same one too, which unlocks the
    # size fields as a click does, or leave the group as it was.
    check = lambda do |error, _|
      fixed = @state[:groups][:size_mode] == [0, 1, 0]
      @fields_locked = !@state[:enabled][:width] if !error && focused == "size_mode" && fixed
    end
    FuzzAction.new(text: "Driver.key(#{key.inspect})", call: -> { @driver.key(key) }, check: check)
  end

  def reset_action
    driver_action(:click_titled, 1, @texts.fetch("opt-tab2-reset-btn"),
                  check: quiet(->(_, _) { reset_check }))
  end

  def edit
    field = %i[width height folder][@rng.rand(3)]
    case @rng.rand(10)
    when 0..4 then driver_action(:type, field, TYPED[@rng.rand(TYPED.size)])
    when 5 then driver_action(:replace, field, TYPED[@rng.rand(TYPED.size)])
    when 6, 7 then driver_action(:clear, field)
    else driver_action(:press_return, field)
    end
  end

  # The "..." button. The chooser is answered (cancel, or a folder) or closed
  # through the window manager only when it can open: an answer left waiting
  # would answer some later chooser. (The window manager's close of the panel
  # reaches it as the close box's does.)
  def folder_chooser
    how = @rng.rand(3)
    folder = how == 1 ? "/tmp" : nil
    call = lambda do
      if control(:choose_folder)[:enabled]
        how == 2 ? @driver.close_folder_chooser_once_shown(5) : @driver.answer_folder_chooser(folder, 5)
      end
      @driver.click(:choose_folder)
    end
    answer = how == 2 ? "closed by the window manager" : "answered with #{folder.inspect}"
    FuzzAction.new(text: "Driver.click(:choose_folder), #{answer}",
                   call: call, gate: :choose_folder,
                   check: quiet(->(error, _) { chooser_check(folder) unless error }))
  end

  def ok_action
    report = nil
    call = lambda do
      report = read_report
      @driver.click(:ok)
    end
    FuzzAction.new(text: "Driver.click(:ok)", call: call, gate: :ok,
                   check: ->(error, _) { ok_check(report) unless error })
  end

  def close_action(method, *args)
    driver_action(method, *args, check: ->(error, before) { close_check(before) unless error })
  end

  # A check for an action that must send no event.
  def quiet(check)
    lambda do |error, before|
      check&.call(error, before)
      expect_no_events
    end
  end
end

# The driver called as a careless test calls it: a name that is no control's
# or no name at all, an index or a text of the wrong type. It must refuse
# before it reaches the toolkit, changing nothing and sending nothing.
module FuzzHostileDriver
  NAMES = [42, nil, 1.5, 2**70, Opaque.new("object"), [:ok], { ok: 1 },
           :no_such_control, :"ok ", "m_p\0Button", "", "x" * 4096].freeze
  NOT_NUMBERS = ["1", nil, :first, Opaque.new("object"), [0], 2**70].freeze
  NOT_TEXTS = [12, nil, :typed, Opaque.new("object"), "1\x002"].freeze
  NOT_KEYS = [*NOT_TEXTS, "hyper+q", "Tabb", "ctrl+", "+", "", "ctrl+shift", "F13"].freeze

  private

  def hostile_driver_action
    method, *args = hostile_call
    text = "Driver.#{method}(#{args.map { |a| PanelText.describe(a) }.join(', ')})"
    FuzzAction.new(text: text, call: -> { @driver.public_send(method, *args) }, hostile: true,
                   check: quiet(->(_, before) { unchanged_check(before) }))
  end

  def hostile_call
    name = NAMES[@rng.rand(NAMES.size)]
    case @rng.rand(10)
    when 0 then [:click, name]
    when 1 then [:control, name]
    when 2 then [:press, name]
    when 3 then [:pick, name, 0]
    when 4 then [:click_cell, :save_location, NOT_NUMBERS[@rng.rand(NOT_NUMBERS.size)]]
    when 5 then [:type, :width, NOT_TEXTS[@rng.rand(NOT_TEXTS.size)]]
    when 6 then [:replace, :width, NOT_TEXTS[@rng.rand(NOT_TEXTS.size)]]
    when 7 then [:slide, name, 50]
    when 8 then [:choose_tab, NOT_NUMBERS[@rng.rand(NOT_NUMBERS.size)]]
    else [:key, NOT_KEYS[@rng.rand(NOT_KEYS.size)]]
    end
  end

  # Refused with a conversion error, or as naming no control.
  def refused?(error)
    [TypeError, ArgumentError, RangeError].any? { |k| error.is_a?(k) } ||
      (error.instance_of?(RuntimeError) && error.message.start_with?("no control named ", "no key "))
  end

  def unchanged_check(before)
    broken("changed the panel: #{before.inspect} became #{@state.inspect}") unless @state == before
  end
end

# What each script call and user action must leave behind.
module FuzzEffects
  EFFECTS = { "output_format=": :format_effect, set_output_directory: :save_effect,
              set_environment_background: :background_effect, populate_presets: :presets_effect,
              set_environment_brightness: :slider_effect, set_environment_contrast: :slider_effect,
              set_output_dimensions: :size_effect, output_directory: :path_effect }.freeze

  private

  def api_check(name, args, error, before)
    return close_check(before) if name == :close && !error
    return render_all_check(args, error) if name == :"hide_render_all="

    expect_no_events
    return if error

    result_check(name)
    broken("show left the panel off screen") if name == :show && !@state[:visible]
    effect = EFFECTS[name] || (box_of(name) && :box_effect)
    send(effect, name, *args) if effect
  end

  def box_of(name) = FuzzPanel::BOXES[name.to_s.delete_prefix("set_environment_").to_sym]

  # Every script method answers true, but new and output_directory.
  def result_check(name)
    if name == :new
      broken("new returned #{@result.inspect}") unless @result.is_a?(Velmar::OptionsPanelWindow)
    elsif name != :output_directory && !@result.equal?(true)
      broken("#{name} returned #{PanelText.describe(@result)}")
    end
  end

  def close_check(before)
    expect("the events of closing", @recorder.names, before[:visible] ? ["close"] : [])
    payload = @recorder.events.dig(0, 1)
    broken("close carried #{payload.inspect}") if payload && !close_payload?(payload)
    broken("the panel is still on screen after closing") if @state[:visible]
  end

  def close_payload?(payload) = payload == [1.0] && payload[0].is_a?(Float)

  def render_all_check(args, error)
    expect("the events of hide_render_all=", @recorder.names,
           error ? [] : ["options_changed_show_render_all"])
    return if error

    payload = @recorder.events[0][1]
    same = payload.size == 1 && payload[0].equal?(args[0])
    broken("hide_render_all= carried #{PanelText.describe(payload)}, not its argument") unless same
  end

  def format_effect(_, format)
    word = PanelText.of(format)
    column = { "pnga" => 0, "png" => 0, "jpg" => 1 }.fetch(word, 2)
    expect("format", cells(:format), one_on(3, column))
    expect("transparent_background state", control(:transparent_background)[:state], 1) if word == "pnga"
  end

  def save_effect(_, mode, folder)
    expect("save_location", cells(:save_location), PanelText.of(mode) == "model" ? [1, 0] : [0, 1])
    expect("folder", text_of(:folder), PanelText.of(folder))
  end

  def background_effect(_, word)
    row = { "default" => 0, "sky" => 1 }.fetch(PanelText.of(word), 2)
    expect("background", cells(:background), one_on(3, row))
  end

  def presets_effect(_, joined)
    text = PanelText.of(joined)
    combo = control(:preset)
    expect("preset items", combo[:items], text.empty? ? [""] : text.split("|", -1))
    expect("preset selection", combo[:selected], -1)
  end

  def slider_effect(name, value)
    slider = name == :set_environment_brightness ? :intensity : :exposure
    expect("#{slider} value", control(slider)[:value], PanelText.int32(value).clamp(0, 100))
  end

  def box_effect(name, on)
    expect("#{box_of(name)} state", control(box_of(name))[:state], on.equal?(true) ? 1 : 0)
  end

  def size_effect(_, mode, *numbers)
    @fields_locked = false
    row = FuzzPanel::SIZE_MODES.index(PanelText.of(mode)) || 2
    expect("size_mode", cells(:size_mode), one_on(3, row))
    texts = %i[width height].map { |f| text_of(f) }
    expect("the size fields", texts, size_texts_after(row, *numbers.map { |n| PanelText.int32(n) }))
  end

  def size_texts_after(row, width, height, viewport_width, viewport_height)
    return %w[0 0] if row.zero?
    return [viewport_width.to_s, viewport_height.to_s] if row == 2 && height.zero?

    [width.to_s, height.to_s]
  end

  def path_effect(_, path)
    broken("output_directory returned a #{@result.class}") unless @result.is_a?(String)
    broken("output_directory returned invalid UTF-8") unless PanelText.utf8?(@result)
    expect("output_directory", @result, PanelText.of(path).tr("\\", "/"))
  end

  def reset_check
    values = %i[intensity exposure].map { |s| control(s)[:value] }
    expect("the sliders after Reset", values, [50, 50])
  end

  def chooser_check(folder)
    broken("the folder chooser was never shown") unless @driver.folder_chooser_answered?
    expect("folder after choosing", text_of(:folder), folder) if folder
  end
end

# What OK must send: the four reports and close, as the controls stood.
module FuzzOkReport
  OK_EVENTS = %w[preset_changed output_changed environment_changed options_changed close].freeze
  OK_PAYLOAD = {
    "preset_changed" => [String], "output_changed" => [String] * 7,
    "environment_changed" => [String] + [Integer] * 5, "options_changed" => [Integer] * 4,
    "close" => [Float]
  }.freeze

  private

  # Read from the controls just before the press.
  def read_report
    combo = control(:preset)
    { groups: FuzzPanel::RADIO_GROUPS.to_h { |g| [g, cells(g)] },
      texts: %i[width height folder].map { |f| text_of(f) },
      trans: control(:transparent_background)[:state],
      boxes: FuzzPanel::BOXES.values.to_h { |b| [b, control(b)[:state]] },
      sliders: %i[intensity exposure].map { |s| control(s)[:value] },
      preset: combo[:selected] >= 0 ? combo[:items][combo[:selected]] : "" }
  end

  def ok_check(report)
    expect("the events of OK", @recorder.names, OK_EVENTS)
    payloads = @recorder.events.to_h
    OK_EVENTS.each { |event| payload_shape(event, payloads[event]) }
    expect("the OK report", payloads.values_at(*OK_EVENTS.first(4)), expected_report(report))
    broken("close carried #{payloads['close'].inspect}") unless close_payload?(payloads["close"])
    broken("the panel is still on screen after OK") if @state[:visible]
  end

  def payload_shape(event, payload)
    types = OK_PAYLOAD.fetch(event)
    broken("#{event} sent a #{payload.class}") unless payload.is_a?(Array)
    expect("the length of #{event}", payload.size, types.size)
    payload.zip(types).each_with_index do |(value, type), i|
      element_shape("#{event}[#{i}]", value, type)
    end
    sliders = event == "environment_changed" ? payload[4, 2] : []
    pinned = sliders.all? { |v| (0..100).cover?(v) }
    broken("slider values #{sliders} not within 0..100") unless pinned
  end

  def element_shape(what, value, type)
    broken("#{what} is a #{value.class}, expected #{type}") unless value.instance_of?(type)
    return unless value.is_a?(String) && !PanelText.utf8?(value)

    broken("#{what} is not valid UTF-8: #{PanelText.describe(value)}")
  end

  # As the apply step reads a radio group: the word of the first cell that is
  # on; the last word when no earlier cell is.
  def word_of(cells, words)
    words.each_with_index.find { |_, i| cells[i] == 1 }&.first || words.last
  end

  def expected_report(r)
    g = r[:groups]
    format = word_of(g[:format], %w[png jpg hdr])
    format = "pnga" if format == "png" && r[:trans] == 1
    width, height, folder = r[:texts]
    b = r[:boxes]
    [[r[:preset]],
     [word_of(g[:size_mode], FuzzPanel::SIZE_MODES), width, height, format,
      word_of(g[:save_location], %w[model custom]), folder, r[:preset]],
     [word_of(g[:background], %w[default sky sky2]), b[:clay], b[:caustics],
      b[:spherical_point_lights], *r[:sliders]],
     [b[:information_bar], b[:caching], b[:translucent_color], b[:automatic_materials]]]
  end
end

# The rules that hold after every step, whatever it was.
module FuzzInvariants
  ENABLED = %i[size width height folder choose_folder
               transparent_background].freeze

  private

  def read_state
    { groups: FuzzPanel::RADIO_GROUPS.to_h { |g| [g, cells(g)] },
      enabled: ENABLED.to_h { |n| [n, control(n)[:enabled]] },
      visible: @driver.window_state[:visible],
      tab: @driver.tabs.index { |t| t[:selected] } }
  end

  def invariants(state)
    state[:groups].each do |group, states|
      on = states.count(1)
      broken("#{group} has #{on} cells on: #{states.inspect}") unless on == 1
    end
    size_rules(state)
    save_and_format_rules(state)
    names_agree
    focus_on_screen(state)
  end

  # The focus is on an enabled control on screen, or nowhere (a script may
  # disable the control that had it), or the panel is closed. A button the
  # controller keeps no name for (Reset) is on screen whenever it is focused.
  def focus_on_screen(state)
    name = @driver.focused
    return unless state[:visible] && name && @control_names.to_h.key?(name.to_sym)

    seen = control(name)
    return if seen[:enabled] != false && seen[:in_window]

    broken("the focus is on #{name}, which is #{seen[:in_window] ? 'disabled' : 'not on screen'}")
  end

  # Both of a control's names in the driver's table reach it: one entry a
  # step, in turn.
  def names_agree
    @control_names ||= @driver.control_names.to_a
    @name_turn = ((@name_turn || -1) + 1) % @control_names.size
    name, controller_name = @control_names[@name_turn]
    return if @driver.control(name) == @driver.control(controller_name)

    broken("#{name} and #{controller_name} are not the same control")
  end

  # Viewport: combo box and fields disabled. Panorama: combo box disabled,
  # fields enabled. Fixed: combo box enabled, fields enabled unless the user
  # picked a preset size since the mode was last chosen.
  def size_rules(state)
    mode = FuzzPanel::SIZE_MODES[state[:groups][:size_mode].index(1)]
    fields = { "viewport" => false, "panorama" => true }.fetch(mode) { !@fields_locked }
    { size: mode == "fixed", width: fields, height: fields }
      .each do |name, enabled|
        next if state[:enabled][name] == enabled

        state_now = enabled ? "disabled" : "enabled"
        broken("#{name} is #{state_now} in #{mode} mode#{fixed_why(mode, name)}")
      end
  end

  def fixed_why(mode, name)
    return "" unless mode == "fixed" && name != :size

    @fields_locked ? ", after the user picked a preset size" : ", with no preset size picked"
  end

  # The folder field and "..." go with "custom", the transparency box with PNG.
  def save_and_format_rules(state)
    custom = state[:groups][:save_location] == [0, 1]
    png = state[:groups][:format][0] == 1
    { folder: custom, choose_folder: custom, transparent_background: png }.each do |name, enabled|
      next if state[:enabled][name] == enabled

      broken("#{name} is #{enabled ? 'disabled' : 'enabled'} with the " \
             "#{custom ? 'custom' : 'model'} location and #{png ? 'PNG' : 'no PNG'} selected")
    end
  end
end

class FuzzWorker
  include FuzzPanel
  include FuzzScriptActions
  include FuzzUserActions
  include FuzzHostileDriver
  include FuzzEffects
  include FuzzOkReport
  include FuzzInvariants

  def initialize(steps, key, report)
    @steps = steps
    @rng = Random.new(key)
    @report = report
    # In fixed mode a preset size picked by the user disables the fields,
    # until the mode is chosen again.
    @fields_locked = false
  end

  def run
    start_panel
    @state = read_state
    (1..@steps).each { |number| step(number) }
    send_report("done" => true, "step" => @steps)
  end

  private

  def start_panel
    require "OptionsPanel"
    require "OptionsPanelDriver"
    require_relative "../examples/texts/en"
    @driver = OptionsPanelDriver
    check_every_method_and_box_fuzzed
    @texts = OptionsPanelTexts::EN
    @args = FuzzArguments.new(@rng, @texts)
    @panel = Velmar::OptionsPanelWindow.new(@texts)
    @recorder = FuzzRecorder.new
    @panel.observe(@recorder)
    @panel.show
  end

  # FuzzPanel's lists are checked against the extension's own, so that a
  # script method or a box added there cannot go unfuzzed.
  def check_every_method_and_box_fuzzed
    methods = Velmar::OptionsPanelWindow.public_instance_methods(false) - [:observe] + [:new]
    unfuzzed = (methods - FuzzPanel::API.keys) + (FuzzPanel::API.keys - methods)
    unknown = FuzzPanel::BOXES.values - @driver.control_names.keys
    abort "fuzz: FuzzPanel::API differs from the extension in #{unfuzzed}" unless unfuzzed.empty?
    abort "fuzz: FuzzPanel::BOXES names controls the driver lacks: #{unknown}" unless unknown.empty?
  end

  def send_report(data) = @report.puts(JSON.generate(data))

  def step(number)
    action = begin
      choose_action
    rescue StandardError => e
      fail_step(number, "choosing the action",
                "the fuzzer raised #{e.class}: #{e.message} at #{e.backtrace.first}")
    end
    send_report("step" => number, "action" => action.text)
    problem = attempt(action)
    fail_step(number, action.text, problem) if problem
  end

  def fail_step(number, text, problem)
    send_report("step" => number, "action" => text, "broke" => problem)
    exit!(1)
  end

  # A user can act only on a panel that is on screen.
  def choose_action
    !@state[:visible] || @rng.rand(100) < 45 ? api_action : user_action
  end

  # Runs the action and its checks; returns what broke, or nil.
  def attempt(action)
    enabled = action.gate && control(action.gate)[:enabled]
    before = @state
    @recorder.events.clear
    error = outcome_of(action)
    judge_error(action, error, enabled) || check_after(action, error, before)
  rescue FuzzBroken => e
    e.message
  rescue Exception => e # a check that cannot read the panel is a failure too
    "checking the panel raised #{e.class}: #{e.message}"
  end

  # Whatever the call raises, down to NoMemoryError and SystemStackError, is
  # judged rather than let through.
  def outcome_of(action)
    @result = action.call.call
    nil
  rescue Exception => e
    e
  end

  # The driver refuses a disabled control; scripts may meet only conversion and arity errors.
  def judge_error(action, error, enabled)
    return hostile_judgement(error) if action.hostile
    return nil if error.nil? && (action.gate.nil? || enabled)
    return "#{action.gate} is disabled, yet the user could act on it" if error.nil?
    return nil if expected_error?(action, error, enabled)

    "raised #{error.class}: #{error.message[0, 300]}"
  end

  def hostile_judgement(error)
    return "was accepted" if error.nil?
    return nil if refused?(error)

    "raised #{error.class}: #{error.message[0, 300]}"
  end

  def expected_error?(action, error, enabled)
    if action.text.start_with?("Driver.")
      error.instance_of?(RuntimeError) && !enabled && error.message == "#{action.gate} is disabled"
    else
      [TypeError, RangeError, ArgumentError].any? { |k| error.is_a?(k) }
    end
  end

  def check_after(action, error, before)
    @state = read_state
    action.check ? action.check.call(error, before) : expect_no_events
    invariants(@state)
    nil
  end
end

if $PROGRAM_NAME == __FILE__
  $stdout.sync = true # the replay key shows at once, even if the run is cut short
  options = Fuzz.options(ARGV)
  if ENV.key?(Fuzz::REPORT_FD_VARIABLE)
    report = IO.new(Integer(ENV.delete(Fuzz::REPORT_FD_VARIABLE)), "w")
    report.sync = true
    FuzzWorker.new(options[:steps], options[:key], report).run
  else
    FuzzSupervisor.new(options[:steps], options[:key]).run
  end
end
