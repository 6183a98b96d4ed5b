require_relative "test_helper"
begin
  require "rbs"
rescue LoadError => e
  RBS_LOAD_ERROR = "rbs is not installed for Ruby #{RUBY_VERSION} (#{e.message})"
end

# sig/velmar.rbs against the extension: the class's methods and arities, and the
# observer interface against the events and payloads that the panel really sends.
class SignaturesTest < Minitest::Test
  include PanelTest

  SIG_PATH = File.expand_path("../sig/velmar.rbs", __dir__)

  def setup
    skip RBS_LOAD_ERROR if defined?(RBS_LOAD_ERROR)
  end

  unless defined?(RBS_LOAD_ERROR)
    # rbs 3 returns the buffer and directives before the declarations, names a
    # type alias declaration TypeAlias instead of Alias, and keeps a method's
    # types in its overloads.
    RBS3 = RBS::VERSION.to_i >= 3
    TYPE_ALIAS = RBS3 ? RBS::AST::Declarations::TypeAlias : RBS::AST::Declarations::Alias

    # Parsed once, outside the tests, which may run with GC.stress on.
    PARSED = RBS::Parser.parse_signature(File.read(SIG_PATH))
    DECLARATIONS = RBS3 ? PARSED.last : PARSED
    VELMAR = DECLARATIONS.find { |d| d.is_a?(RBS::AST::Declarations::Module) && d.name.name == :Velmar }
    CLASS_SIG = VELMAR.members.find { |d| d.is_a?(RBS::AST::Declarations::Class) }
    OBSERVER_SIG = VELMAR.members.find { |d| d.is_a?(RBS::AST::Declarations::Interface) }
    ALIASES = VELMAR.members.grep(TYPE_ALIAS).to_h { |a| [a.name.name, a.type] }
  end

  def self.method_types(method)
    RBS3 ? method.overloads.map(&:method_type) : method.types
  end

  # Name => number of arguments, for each method of a class or interface declaration.
  def self.arities(declaration)
    declaration.members.grep(RBS::AST::Members::MethodDefinition).to_h do |method|
      assert_simple(method)
      [method.name, method_types(method).first.type.required_positionals.size]
    end
  end

  # Plain positional parameters only: arity is then their count.
  def self.assert_simple(method)
    raise "#{method.name}: one overload only" unless method_types(method).size == 1
    function = method_types(method).first.type
    extra = function.optional_positionals + function.trailing_positionals +
            function.required_keywords.values + function.optional_keywords.values
    raise "#{method.name}: only required positional parameters" unless extra.empty? && !function.rest_positionals
  end

  def payload_types
    OBSERVER_SIG.members.to_h { |m| [m.name, self.class.method_types(m).first.type.required_positionals.first.type] }
  end

  def test_the_class_signature_has_every_method_and_arity
    assert_equal SCRIPT_METHODS.sort, self.class.arities(CLASS_SIG).sort
  end

  def test_the_observer_interface_names_exactly_the_events_that_are_sent
    payloads = sent_payloads
    assert_equal payloads.keys.map(&:to_sym).sort, self.class.arities(OBSERVER_SIG).keys.sort
    assert(self.class.arities(OBSERVER_SIG).values.all? { |arity| arity == 1 }, "one argument: the payload")
  end

  def test_every_payload_sent_matches_its_tuple_type
    types = payload_types
    sent_payloads.each do |event, list|
      list.each { |payload| assert conforms?(payload, types.fetch(event.to_sym)), "#{event}: #{payload.inspect}" }
    end
  end

  # What the observers heard, by event, over presses of OK that between them
  # reach every word of every group, and calls of hide_render_all=.
  def sent_payloads
    p = reset_panel
    events = press_ok.to_a
    [%w[fixed pnga model sky], %w[panorama hdr custom sky2], %w[viewport jpg model default]].each do |mode, format, save, bg|
      p.show
      p.set_output_dimensions(mode, 1000, 500, 800, 600)
      p.output_format = format
      p.set_output_directory(save, "/renders")
      p.set_environment_background(bg)
      %i[clay caching information_bar].each { |o| p.public_send("set_environment_#{o}", mode == "fixed") }
      events += press_ok.to_a
    end
    LOG.clear
    [nil, :x, Object.new].each { |v| p.public_send(:hide_render_all=, v) }
    (events + LOG.events).group_by(&:first).transform_values { |pairs| pairs.map(&:last) }
  end

  def conforms?(value, type)
    case type
    when RBS::Types::Tuple
      value.is_a?(Array) && value.size == type.types.size && value.zip(type.types).all? { |v, t| conforms?(v, t) }
    when RBS::Types::Union then type.types.any? { |t| conforms?(value, t) }
    when RBS::Types::Literal then value == type.literal
    when RBS::Types::Alias then conforms?(value, ALIASES.fetch(type.name.name))
    when RBS::Types::ClassInstance then Object.const_get(type.name.to_s).===(value)
    when RBS::Types::Bases::Any then true
    else flunk "no check for #{type.class} (#{type})"
    end
  end
end
