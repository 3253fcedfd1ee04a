// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// A collection and its record
inline constexpr failure_of<a_path> collection_is_missing{"collection is missing",
                                                          "\"%1\" is missing: there is no collection."};
inline constexpr failure_of<a_path> collection_record_is_strange{
    "collection record is strange",
    "\"%1\" does not hold a collection. It is kept beside when this one is saved."};
inline constexpr failure_of<a_path> collection_names_no_vistel{
    "collection names no vistel", "\"%1\" names something that is no vistel. It is passed over."};
inline constexpr failure_of<a_path> collection_is_being_loaded{
    "collection is being loaded", "\"%1\" was not saved: the collection is still being loaded."};
inline constexpr failure_of<a_path> folder_holds_a_collection{"folder holds a collection",
                                                              "\"%1\" holds a collection already."};
inline constexpr failure_of<a_text, a_text> vistel_got_a_number{
    "vistel got a number", "The vistel \"%1\" had no number, and has got %2: clips refer to it by that."};
inline constexpr failure_of<a_text, a_text> vistels_share_a_number{
    "vistels share a number",
    "The vistels \"%1\" and \"%2\" have the same number: clips that refer to it show the first."};
inline constexpr failure_of<a_text> vistel_is_there_twice{
    "vistel is there twice", "The vistel \"%1\" is in the collection twice: both show the same data."};

// Edits of a collection; causes of edit_could_not_be_done
inline constexpr failure_of<a_text> edited_vistel_is_gone{"edited vistel is gone",
                                                          "the collection has no vistel \"%1\"."};
inline constexpr failure_of<> vistel_has_no_place{"vistel has no place", "a vistel has no place."};

// What is wrong with the data of a vistel. Those that begin small are causes of vistel_was_not_loaded.
inline constexpr failure_of<a_text, a_cause> vistel_was_not_loaded{
    "vistel was not loaded", "error found when loading vistel in collection: \"%1\": %2"};
inline constexpr failure_of<a_path> movie_does_not_answer{
    "movie does not answer", "\"%1\" is not answering. It is tried again and again."};
inline constexpr failure_of<a_path> movie_is_gone{"movie is gone", "\"%1\" is not there any more."};
inline constexpr failure_of<a_text, a_text> movie_is_changed{"movie is changed",
                                                             "changed: %1 s, on record %2 s"};
inline constexpr failure_of<> no_movie_parts{"no movie parts", "There are no movie parts."};
inline constexpr failure_of<> item_has_no_movie_parts{"item has no movie parts",
                                                      "File list item has no movie parts."};
inline constexpr failure_of<a_text, a_cause> vistel_has_a_fault{"vistel has a fault", "\"%1\": %2"};
inline constexpr failure_of<a_path, a_cause> item_has_a_fault{"item has a fault", "\"%1\": %2"};
inline constexpr failure_of<a_path, a_cause> folder_holds_no_movie{"folder holds no movie",
                                                                   "\"%1\" holds no movie. %2"};
inline constexpr failure_of<a_path> folder_holds_no_picture{"folder holds no picture",
                                                            "\"%1\" holds no picture."};
inline constexpr failure_of<a_text, a_path> part_has_no_file{
    "part has no file", "the file of movie part %1 is missing in \"%2\"."};
inline constexpr failure_of<a_text, a_path> file_of_part_is_missing{
    "file of part is missing", "The file of movie part %1 is missing in \"%2\"."};
inline constexpr failure_of<a_text, a_path> movie_of_vistel_is_missing{
    "movie of vistel is missing", "A movie of \"%1\" is missing in \"%2\"."};
inline constexpr failure_of<a_path> movie_is_not_listed{
    "movie is not listed", "\"%1\" is not in the vistel's list of movie parts. It is shown after them."};
inline constexpr failure_of<> record_has_no_identifier{"record has no identifier",
                                                       "its record has no usable identifier."};
inline constexpr failure_of<a_path> vistel_folder_is_missing{"vistel folder is missing",
                                                             "its folder \"%1\" is missing."};
inline constexpr failure_of<a_text, a_path> streamed_vistel_has_no_copy{
    "streamed vistel has no copy", "it is streamed from \"%1\", and there is no local copy in \"%2\"."};
inline constexpr failure_of<a_path> file_holds_no_vistel{"file holds no vistel",
                                                         "\"%1\" does not hold a vistel."};
inline constexpr failure_of<a_text> vistel_data_is_missing{"vistel data is missing",
                                                           "The data of the vistel \"%1\" is missing."};
inline constexpr failure_of<a_text, a_text> vistel_is_shorter{
    "vistel is shorter",
    "Vistel '%1' is %2 seconds shorter than expected.  \r\rRestarting HLS localizing for this vistel may "
    "fix this."};

// Bringing movies
inline constexpr failure_of<a_path> file_has_no_pictures{"file has no pictures", "\"%1\" holds no pictures."};
inline constexpr failure_of<a_path> pictures_have_no_times{
    "pictures have no times", "\"%1\" cannot be played: its pictures have no times."};
inline constexpr failure_of<a_path> picture_among_movies{
    "picture among movies", "\"%1\" is a picture. It can only be a vistel of its own."};
inline constexpr failure_of<a_text> vistel_is_a_picture{
    "vistel is a picture", "The vistel \"%1\" is a picture: it has no movie parts."};
inline constexpr failure_of<a_path> file_is_no_picture{"file is no picture",
                                                       "\"%1\" is no picture (PNG or JPEG)."};
inline constexpr failure_of<a_path> copying_was_cancelled{"copying was cancelled",
                                                          "Copying \"%1\" was cancelled."};

// Padding
inline constexpr failure_of<a_text, a_cause> vistel_cannot_be_padded{
    "vistel cannot be padded", "\"%1\" has a start offset but cannot be padded: %2"};
inline constexpr failure_of<a_cause> blank_movie_not_made{"blank movie not made",
                                                          "Could not make an empty vistel movie. %1"};

inline constexpr failure_of<a_path> movie_has_no_length{"movie has no length",
                                                        "\"%1\" would have no length."};

// The lock of a vault
inline constexpr failure_of<a_text> vault_is_being_modified{"vault is being modified",
                                                            "Vault '%1' is currently being modified."};
inline constexpr failure_of<a_path, a_cause> vault_cannot_be_changed{"vault cannot be changed",
                                                                     "\"%1\" cannot be changed: %2."};

}  // namespace vistels
