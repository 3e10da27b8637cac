# A formula for Homebrew, on Macs. There is no release yet, so it has no archive and no checksum of one: it builds the
# main branch (--HEAD). Whoever makes a release adds `url` and `sha256` of its archive. The address of the repository is
# one that nobody has, to be replaced by the address that a tap's users reach. docs/packaging.md says how to use it.
class TavelClipboardAgent < Formula
  desc "Background process that gives an application the user's clipboard"
  homepage "https://tavel-clipboard-agent.example/"
  license "MIT"
  head "https://tavel-clipboard-agent.example/TavelClipboardAgent.git", branch: "main"

  depends_on "cli11" => :build
  depends_on "cmake" => :build
  depends_on "ninja" => :build
  depends_on "nlohmann-json" => :build
  depends_on "pandoc" => :build
  depends_on "pkgconf" => :build
  depends_on "glib"
  depends_on "libedit"
  depends_on macos: :ventura

  # The agent's own libraries, built with it: cmake/Libraries names the same archives.
  resource "highway-1.0.3" do
    url "https://github.com/google/highway/archive/refs/tags/1.0.3.tar.gz"
    sha256 "566fc77315878473d9a6bd815f7de78c73734acdcb745c3dde8579560ac5440e"
  end

  resource "simdjson-3.0.1" do
    url "https://github.com/simdjson/simdjson/archive/refs/tags/v3.0.1.tar.gz"
    sha256 "156b1bc5eb0561b2bd166b46d191fd3d95a3e709cc63761477d3b7aec2b6e9ed"
  end

  resource "utf8proc-2.8.0" do
    url "https://github.com/JuliaStrings/utf8proc/archive/refs/tags/v2.8.0.tar.gz"
    sha256 "a0a60a79fe6f6d54e7d411facbfcc867a6e198608f2cd992490e46f04b1bcecc"
  end

  def install
    libraries = buildpath/"libraries"
    resources.each { |library| library.stage(libraries/library.name) }
    ENV.prepend_path "PKG_CONFIG_PATH", Formula["libedit"].opt_lib/"pkgconfig"
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", *std_cmake_args,
           "-DTAVEL_BUILD_TESTS=OFF", "-DTAVEL_WARNINGS_ARE_ERRORS=OFF", "-DTAVEL_LIBRARY_SOURCES=#{libraries}"
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
  end

  # What an application sends to the agent arrives at another one. The pasteboard is one of the test's own.
  test do
    request = '{"command":"write_text","request_id":1,"text_b64":"Qm9uam91cg","marker":"test"}'
    pasteboard = "brew-test-#{Process.pid}"
    reply = pipe_output("#{libexec}/TavelClipboardAgent --test-pasteboard #{pasteboard}", "#{request}\n", 0)
    assert_match '{"request_id":1,"ok":true,', reply
    assert_equal "Bonjour", shell_output("#{bin}/tavel-pasteboard --pasteboard #{pasteboard} paste")
  end
end
