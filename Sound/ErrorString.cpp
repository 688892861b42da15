#include "Sound/Fmod.h"

#include <cstddef>
#include <iterator>

namespace {

// In the order of the codes; the comments give the rest of each name FMOD_ERR_….
const char *const texts[] = {
    "No errors.",                                                    // 0 (FMOD_OK)
    "The sound is locked already.",                                  // ALREADYLOCKED
    "This call does not suit the object it was made on.",            // BADCOMMAND
    "No usable driver for the disc drive was found.",                // CDDA_DRIVERS
    "The disc drive could not be set up.",                           // CDDA_INIT
    "There is no such disc drive.",                                  // CDDA_INVALID_DEVICE
    "The disc holds no audio tracks.",                               // CDDA_NOAUDIO
    "This machine has no disc drive.",                               // CDDA_NODEVICES
    "The disc drive is empty.",                                      // CDDA_NODISC
    "The disc could not be read.",                                   // CDDA_READ
    "No channel is free to play on.",                                // 10 CHANNEL_ALLOC
    "The channel plays another sound by now.",                       // CHANNEL_STOLEN
    "A component of the operating system failed to start.",          // COM
    "A transfer to the sound hardware failed.",                      // DMA
    "The effect units cannot be joined this way.",                   // DSP_CONNECTION
    "The effect unit does not take this sample format.",             // DSP_FORMAT
    "The effect unit is not part of the chain.",                     // DSP_NOTFOUND
    "The effect unit is running and cannot be changed now.",         // DSP_RUNNING
    "The effect unit has no room for another connection.",           // DSP_TOOMANYCONNECTIONS
    "The file is damaged or unreadable.",                            // FILE_BAD
    "The reading position in the file cannot be moved.",             // 20 FILE_COULDNOTSEEK
    "The disc was taken out while it was being read.",               // FILE_DISKEJECTED
    "The file ends too early.",                                      // FILE_EOF
    "There is no such file.",                                        // FILE_NOTFOUND
    "The file is of no use here.",                                   // FILE_UNWANTED
    "This kind of sound cannot be played.",                          // FORMAT
    "The web server sent an unusable answer.",                       // HTTP
    "The web server denies access.",                                 // HTTP_ACCESS
    "The web proxy asks for a log-in.",                              // HTTP_PROXY_AUTH
    "The web server failed.",                                        // HTTP_SERVER_ERROR
    "The web server took too long.",                                 // 30 HTTP_TIMEOUT
    "The sound system could not be started.",                        // INITIALIZATION
    "This must be called before the sound system is started.",       // INITIALIZED
    "Something went wrong inside the sound system.",                 // INTERNAL
    "The memory address cannot be used.",                            // INVALID_ADDRESS
    "A value is infinite or not a number.",                          // INVALID_FLOAT
    "The object is no longer in use.",                               // INVALID_HANDLE
    "An argument is missing or out of range.",                       // INVALID_PARAM
    "The position lies outside the sound.",                          // INVALID_POSITION
    "The speaker layout has no such speaker.",                       // INVALID_SPEAKER
    "The marker belongs to another sound.",                          // 40 INVALID_SYNCPOINT
    "The direction vectors have a wrong length or angle.",           // INVALID_VECTOR
    "As many voices of this sound are heard as may be.",             // MAXAUDIBLE
    "There is too little memory.",                                   // MEMORY
    "This sound must be copied before it can be played.",            // MEMORY_CANTPOINT
    "The memory of the sound hardware is full.",                     // MEMORY_SRAM
    "Only a sound without a place in space can do this.",            // NEEDS2D
    "Only a sound with a place in space can do this.",               // NEEDS3D
    "Only a sound mixed by hardware can do this.",                   // NEEDSHARDWARE
    "Only a sound mixed by software can do this.",                   // NEEDSSOFTWARE
    "The server cannot be reached.",                                 // 50 NET_CONNECT
    "The network connection broke.",                                 // NET_SOCKET_ERROR
    "The web address leads nowhere.",                                // NET_URL
    "The network has no data ready yet.",                            // NET_WOULD_BLOCK
    "The object is still being loaded.",                             // NOTREADY
    "Another program holds the sound device.",                       // OUTPUT_ALLOCATED
    "The sound device has no room for a buffer.",                    // OUTPUT_CREATEBUFFER
    "The sound driver reported a failure.",                          // OUTPUT_DRIVERCALL
    "The sound devices could not be listed.",                        // OUTPUT_ENUMERATION
    "The sound device does not take this sample format.",            // OUTPUT_FORMAT
    "The sound output could not be opened.",                         // 60 OUTPUT_INIT
    "The sound device has too few voices of its own.",               // OUTPUT_NOHARDWARE
    "The sound system was started without software voices.",         // OUTPUT_NOSOFTWARE
    "This sound cannot be panned this way.",                         // PAN
    "A plug-in failed.",                                             // PLUGIN
    "The plug-in is used as often as it may be.",                    // PLUGIN_INSTANCES
    "A part that was asked for is not installed.",                   // PLUGIN_MISSING
    "A plug-in lacks something that it needs.",                      // PLUGIN_RESOURCE
    "A loaded bank still holds the sound.",                          // PRELOADED
    "An event still plays the sound that it was given.",             // PROGRAMMERSOUND
    "The recording could not be started.",                           // 70 RECORD
    "There is no such reverberation unit, or it is taken.",          // REVERB_INSTANCE
    "The part belongs to another sound already.",                    // SUBSOUND_ALLOCATED
    "A shared part of a sound cannot be moved.",                     // SUBSOUND_CANTMOVE
    "The modes of the part and of its sound differ.",                // SUBSOUND_MODE
    "The sound has parts and should not, or has none and should.",   // SUBSOUNDS
    "The sound carries no such tag.",                                // TAGNOTFOUND
    "The sound has more channels than can be played.",               // TOOMANYCHANNELS
    "This is not there yet.",                                        // UNIMPLEMENTED
    "The sound system must be started first.",                       // UNINITIALIZED
    "This is not possible here.",                                    // 80 UNSUPPORTED
    "The regular update of the sound system failed.",                // UPDATE
    "The version of the sound library or of its file does not fit.", // VERSION
    "The event could not be played.",                                // EVENT_FAILED
    "The event was fetched for information and cannot be played.",   // EVENT_INFOONLY
    "Something went wrong inside the event system.",                 // EVENT_INTERNAL
    "The events play as many streams as they may.",                  // EVENT_MAXSTREAMS
    "The event data and their sound bank do not match.",             // EVENT_MISMATCH
    "Two event items have the same name.",                           // EVENT_NAMECONFLICT
    "There is no such event item.",                                  // EVENT_NOTFOUND
    "Only a simple event can do this.",                              // 90 EVENT_NEEDSSIMPLE
    "Two event items have the same identifier.",                     // EVENT_GUIDCONFLICT
    "The event project is loaded already.",                          // EVENT_ALREADY_LOADED
    "No music data have been loaded.",                               // MUSIC_UNINITIALIZED
    "The music data have no such item.",                             // MUSIC_NOTFOUND
    "The music system was given no function to call back.",          // MUSIC_NOCALLBACK
};
static_assert(std::size(texts) == 96);

} // namespace

const char *FMOD::errorString(FMOD_RESULT result)
{
    const bool known = result >= 0 && static_cast<std::size_t>(result) < std::size(texts);
    return known ? texts[result] : "Unknown error.";
}
