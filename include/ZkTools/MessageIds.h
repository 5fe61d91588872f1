/// The ids of the library's messages, for resource scripts as well as for C++: hence macros.
/// The comment behind an id names the arguments of its text, in order; all are wide strings unless told otherwise.
#ifndef ZKTOOLS_MESSAGEIDS_H
#define ZKTOOLS_MESSAGEIDS_H

#define IDS_CANNOT_MAKE_DIRECTORY 4210              // path
#define IDS_FILE_OR_DIRECTORY_EXISTS_NOT 4211       // path
#define IDS_DIRECTORY_EXISTS_NOT 4212               // path
#define IDS_APPEND_FILE_DETAIL 4215                 // path; also every failed open of a file stream
#define IDS_COPY_FAILED 4220                        // path; here of what could not be deleted
#define IDS_RENAME_FAILED 4230                      // old path, new path
#define IDS_REPLACE_FAILED 4231                     // path to be replaced, path of what replaces it
#define IDS_FILE_OR_DIRECTORY_MISSING 4250          // path
#define IDS_DIRECTORY_MISSING 4251                  // path
#define IDS_INTERNET_READ_FAILED 4260               // location; also every failed read of a file stream
#define IDS_FILE_WRITE_FAILED 4270                  // path
#define IDS_SEEK_OUT_OF_RANGE 4280                  // none
#define IDS_NULL_READ_BUFFER 4290                   // none
#define IDS_READ_PAST_END 4291                      // none
#define IDS_APPEND_FILE_FAILED 4292                 // source path, target path
#define IDS_FILE_OPEN_FAILED 4319                   // path
#define IDS_LOCK_OPEN_FAILED 4320                   // directory
#define IDS_LOCK_FAILED 4321                        // directory
#define IDS_LOCK_WRITER_UNKNOWN 4322                // directory
#define IDS_LOCK_WRITER_KNOWN 4323                  // directory, writer
#define IDS_LOCK_READ_ONLY 4324                     // directory
#define IDS_LOCK_IN_USE 4325                        // directory
#define IDS_LOCK_READERS_KNOWN 4326                 // directory, readers, one a line
#define IDS_LOCK_REFUSED 4327                       // path of the object, of a file lock also its name
#define IDS_INVALID_NAME 4328                       // the forbidden characters
#define IDS_FILE_LOCK_FAILED 4339                   // file
#define IDS_FILE_LOCK_WRITER_KNOWN 4340             // file, writer
#define IDS_FILE_LOCK_WRITER_UNKNOWN 4341           // file
#define IDS_FILE_LOCK_OPEN_FAILED 4342              // file
#define IDS_FILE_LOCK_IN_USE 4343                   // file
#define IDS_FILE_LOCK_READERS_KNOWN 4344            // file, readers, one a line
#define IDS_COPY_FILE_FAILED 4345                   // source path, target path
#define IDS_LOCK_OPERATION_FAILED 4501              // none
#define IDS_OPTION_ELEMENT_MISSING 4506             // child name, own name
#define IDS_OPTION_ELEMENT_MISSING_AT_POSITION 4507 // position (int), child name, own name
#define IDS_DECIMAL_INVALID 4534                    // value, name of its type
#define IDS_RENAME_BAD_NAME_DETAIL 4535             // none
#define IDS_DEFAULT_USER_TEXT 4541                  // none; labels of the default value functions
#define IDS_DEFAULT_SHORT_DATE 4542                 // none
#define IDS_DEFAULT_ISO_DATE 4543                   // none
#define IDS_DEFAULT_ISO_DATE_TIME 4544              // none
#define IDS_DEFAULT_TIME 4545                       // none
#define IDS_DEFAULT_UUID 4546                       // none

#define IDR_LANGUAGES 4002 // the language table, RT_RCDATA

#endif
