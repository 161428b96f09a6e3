// Prints the id of this PC: java -cp jna.jar DeviceId.java [FORMAT]
//
// JNA calls the library. It looks where the loader does, and in the folder of -Djna.library.path.

import com.sun.jna.Library;
import com.sun.jna.Native;

public class DeviceId {
  static final int ID_SIZE = 41, LOG_SIZE = 65536;  // DEVICEID_ID_SIZE, DEVICEID_LOG_SIZE

  public interface DeviceIdLibrary extends Library {  // with cdecl, which JNA assumes
    int GetHardwareId(byte[] deviceId, int deviceIdSize, String version, byte[] log, int logSize);
  }

  public static void main(String[] arguments) {
    String version = arguments.length > 0 ? arguments[0] : "2.0";
    byte[] id = new byte[ID_SIZE];
    byte[] log = new byte[LOG_SIZE];
    try {
      DeviceIdLibrary library = Native.load("deviceid", DeviceIdLibrary.class);
      int result = library.GetHardwareId(id, ID_SIZE, version, log, LOG_SIZE);
      if (result == 0) {
        System.out.println(Native.toString(id));
        return;
      }
      System.err.println("DeviceId: result " + result + " for format \"" + version + "\"");
    } catch (LinkageError failure) {
      System.err.println("DeviceId: " + failure.getMessage().replace('\n', ' '));
    }
    System.exit(1);
  }
}
