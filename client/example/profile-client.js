// Prints the profile of the user. Runs under the script host of the system:
//   cscript //nologo profile-client.js
// A script has no window: a program of the desktop client has to own the frame window meanwhile.
var outlook = 1; // TLVOIMAILTYPE_OFFICEOUTLOOK
var patienceMs = 60000;

function pause() {
    try {
        WScript.Sleep(100);
    } catch (notImplemented) {
        // Wine 8 has no Sleep; the next call takes its own time.
    }
}

var server = new ActiveXObject("dtOIEx64.MapiClient");
server.Initialize(outlook, "", "CALENDARING");

// Without a sink the end of the initialization shows in the profile, which is empty until then.
var start = new Date().getTime();
var profile = server.GetCurProfileInfo();
while (!profile && new Date().getTime() - start < patienceMs) {
    pause();
    profile = server.GetCurProfileInfo();
}
WScript.Echo(profile ? profile : "no profile within a minute");

server.ReleaseApp(false);
