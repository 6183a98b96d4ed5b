# frozen_string_literal: true

# A stack frame in this project's code: a source file under binding/, panel/,
# platform/ or driver/ of the checkout at root, or one of the two extensions.
def project_code(root)
  %r{#{Regexp.escape(root)}/(binding|panel|platform|driver)/|/OptionsPanel(Driver)?\.so\b}
end
