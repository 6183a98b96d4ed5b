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

  # Parsed once, outside the tests, which may run with GC.stress on. rbs 3
  # returns the buffer and directives before the declarations, hence flatten.
  unless defined?(RBS_LOAD_ERROR)
    PARSED = RBS::Parser.parse_signature(File.read(File.expand_path("../sig/velmar.rbs", __dir__)))
    VELMAR = PARSED.flatten.grep(RBS::AST::Declarations::Module).first
  end

  # Name => parameters of each method of the class or interface, whose arity is
  # then their count. rbs 3 keeps a method's types in its overloads.
  def parameters(kind)
    VELMAR.members.grep(kind).first.members.grep(RBS::AST::Members::MethodDefinition).to_h do |method|
      types = method.respond_to?(:overloads) ? method.overloads.map(&:method_type) : method.types
      params = types.first.type.required_positionals
      # [overloads, parameters]: one, of required positional parameters only.
      assert_equal [1, params.size], [types.size, types.first.type.each_param.count], method.name.to_s
      [method.name, params]
    end
  end

  # The class's methods and arities; then what the observers hear over presses
  # of OK that between them reach every word of every group, and calls of
  # hide_render_all=: the interface names exactly these events, each with one
  # argument, whose type every payload fits.
  def test_the_signatures_match_the_class_and_the_events_and_payloads_it_sends
    skip RBS_LOAD_ERROR if defined?(RBS_LOAD_ERROR)
    assert_equal SCRIPT_METHODS.sort, parameters(RBS::AST::Declarations::Class).transform_values(&:size).sort
    p = reset_panel
    events = [%w[viewport png model default], %w[fixed pnga model sky], %w[panorama hdr custom sky2],
              %w[viewport jpg model default]].flat_map do |mode, format, save, bg|
      p.show
      p.set_output_dimensions(mode, 1000, 500, 800, 600)
      p.output_format = format
      p.set_output_directory(save, "/renders")
      p.set_environment_background(bg)
      %i[clay caching information_bar].each { |o| p.public_send("set_environment_#{o}", mode == "fixed") }
      press_ok.to_a
    end
    [nil, :x, Object.new].each { |v| p.hide_render_all = v }
    # LOG still holds the last OK's events: they count twice, which changes nothing.
    sent = events + LOG.events
    observer = parameters(RBS::AST::Declarations::Interface)
    # Each event sent, with one argument: the payload.
    assert_equal sent.map { |event, _| [event.to_sym, 1] }.uniq.sort, observer.transform_values(&:size).sort
    sent.each { |event, x| assert conforms?(x, observer[event.to_sym][0].type), "#{event}: #{x.inspect}" }
  end

  def conforms?(value, type)
    case type
    when RBS::Types::Tuple
      value.is_a?(Array) && value.size == type.types.size && value.zip(type.types).all? { |v, t| conforms?(v, t) }
    when RBS::Types::Union then type.types.any? { |t| conforms?(value, t) }
    when RBS::Types::Literal then value == type.literal
    when RBS::Types::Alias then conforms?(value, VELMAR.members.find { |d| d.name == type.name }.type)
    when RBS::Types::ClassInstance then Object.const_get(type.name.to_s).===(value)
    when RBS::Types::Bases::Any then true
    else flunk "no check for #{type.class} (#{type})"
    end
  end
end
