// Prints the id of this PC: DeviceId [FORMAT]
//
// The library lies beside the program, or where the loader looks for libraries. The process has to
// run with as many bits as it.

using System;
using System.Runtime.InteropServices;
using System.Text;

static class DeviceId
{
    const int IdSize = 41, LogSize = 65536;  // DEVICEID_ID_SIZE and DEVICEID_LOG_SIZE of deviceid.h

    // "deviceid" is deviceid.dll on Windows and libdeviceid.so on Linux.
    [DllImport("deviceid", CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    static extern int GetHardwareId(
        [Out] byte[] deviceId, uint deviceIdSize, [MarshalAs(UnmanagedType.LPStr)] string version,
        [Out] byte[] log, uint logSize);

    // The result of the call. The id is a text if it is 0.
    public static int Get(string version, out string id, out string log)
    {
        var idBuffer = new byte[IdSize];
        var logBuffer = new byte[LogSize];
        int result = GetHardwareId(idBuffer, IdSize, version, logBuffer, LogSize);
        id = Text(idBuffer);
        log = Text(logBuffer);
        return result;
    }

    static string Text(byte[] buffer)
    {
        return Encoding.UTF8.GetString(buffer, 0, Array.IndexOf(buffer, (byte)0));
    }

    // On Windows the hardware cannot be read on a single-threaded apartment: leave Main as MTA, and
    // call from a thread of your own in a program with windows.
    [MTAThread]
    static int Main(string[] arguments)
    {
        string version = arguments.Length > 0 ? arguments[0] : "2.0";
        try
        {
            string id, log;
            int result = Get(version, out id, out log);
            if (result == 0)
            {
                Console.WriteLine(id);
                return 0;
            }
            Console.Error.WriteLine("DeviceId: result {0} for format \"{1}\"", result, version);
        }
        catch (Exception failure)  // no library, no such function, or another number of bits
        {
            Console.Error.WriteLine("DeviceId: {0}", failure.Message.Replace('\n', ' '));
        }
        return 1;
    }
}
