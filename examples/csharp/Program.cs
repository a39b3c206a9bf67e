using System;
using System.Runtime.InteropServices;
using System.Text;

static class Program {
  const string Dll = "TolmarAgentC.dll";

  [StructLayout(LayoutKind.Sequential)]
  struct Configuration { public uint Size; [MarshalAs(UnmanagedType.LPUTF8Str)] public string Path, Json; }
  [StructLayout(LayoutKind.Sequential)]
  struct Cause { public uint Size; public IntPtr Id, Happened, Seen, Remedy; }
  [StructLayout(LayoutKind.Sequential)]
  struct Progress { public uint Size; public int Percent; public IntPtr Title, Status; }
  delegate void OnProgress(IntPtr context, ref Progress progress);
  [StructLayout(LayoutKind.Sequential)]
  struct Options { public uint Size; public int PreinstallOnly; public IntPtr Cancel; public OnProgress OnProgress; public IntPtr Context; public uint Interval; }

  [DllImport(Dll)] static extern uint tolmar_start(ref Configuration configuration, out IntPtr complaint);
  [DllImport(Dll)] static extern uint tolmar_stop();
  [DllImport(Dll)] static extern void tolmar_free(IntPtr text);
  [DllImport(Dll)] static extern uint tolmar_describe(uint code, ref Cause cause);
  [DllImport(Dll)] static extern uint tolmar_get_entitled_software(out IntPtr titles);
  [DllImport(Dll)] static extern uint tolmar_install_entitled_software(IntPtr titles, ref Options options, out IntPtr result);

  static string Text(IntPtr text) {
    int length = 0;
    while (text != IntPtr.Zero && Marshal.ReadByte(text, length) != 0) length++;
    var bytes = new byte[length];
    if (length > 0) Marshal.Copy(text, bytes, 0, length);
    return Encoding.UTF8.GetString(bytes);
  }

  static bool Failed(string step, uint code) {
    var cause = new Cause { Size = (uint)Marshal.SizeOf(typeof(Cause)) };
    if (code != 0) tolmar_describe(code, ref cause);
    if (code != 0) Console.Error.WriteLine("{0}: code {1}. {2} {3}", step, code, Text(cause.Happened), Text(cause.Remedy));
    return code != 0;
  }

  static int Main(string[] arguments) {
    IntPtr complaint, titles, installed = IntPtr.Zero;
    var configuration = new Configuration { Size = (uint)Marshal.SizeOf(typeof(Configuration)), Path = arguments[0] };
    if (Failed("start", tolmar_start(ref configuration, out complaint))) {
      Console.Error.WriteLine(Text(complaint));
      tolmar_free(complaint);
      return 1;
    }
    OnProgress told = (IntPtr context, ref Progress p) => Console.WriteLine("{0}: {1}, {2} %", Text(p.Title), Text(p.Status), p.Percent);
    var options = new Options { Size = (uint)Marshal.SizeOf(typeof(Options)), OnProgress = told };
    bool failed = Failed("titles", tolmar_get_entitled_software(out titles)) ||
                  Failed("install", tolmar_install_entitled_software(titles, ref options, out installed));
    Console.WriteLine(Text(installed));  // JSON: each title has "status" now
    tolmar_free(titles);
    tolmar_free(installed);
    tolmar_stop();  // always, before the process ends
    return failed ? 1 : 0;
  }
}
