# Loaded into the suite's process by scripts/check-reliability.sh: a full
# garbage collection at every allocation while each test's setup, body and
# teardown run, so that a Ruby object the extension holds without marking it
# is freed at once and the test trips over it. Loading the test files and
# minitest's own bookkeeping go at full speed: under stress throughout, the
# suite had not even finished loading after 20 minutes.
require "minitest"

module GCStressEachTest
  def before_setup
    super
    GC.stress = true
  end

  def after_teardown
    GC.stress = false
    super
  end
end
Minitest::Test.prepend(GCStressEachTest)
