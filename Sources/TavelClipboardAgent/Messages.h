#pragma once

#include "Support/FileError.h"
#include "TavelClipboardAgent/HomePlatformError.h"

#include <string>
#include <string_view>

/// The agent's texts for people: the reasons of failed commands, the warnings, and the naming panel's texts.
namespace tavel::messages {

inline constexpr std::string_view invalidText = "Texte clipboard invalide";
inline constexpr std::string_view textWriteFailed = "Écriture NSPasteboard impossible";
inline constexpr std::string_view invalidHistoryImage = "Image historique invalide";
inline constexpr std::string_view imageWriteFailed = "Écriture image impossible";
inline constexpr std::string_view changedDuringTransfer =
    "Le presse-papiers local a changé pendant le transfert";
inline constexpr std::string_view invalidFiles = "Fichiers clipboard invalides";
inline constexpr std::string_view unknownFormat = "Format clipboard inconnu";
inline constexpr std::string_view invalidFormats = "Formats clipboard invalides";
inline constexpr std::string_view formatRefused = "Format clipboard refusé";
inline constexpr std::string_view formatsWriteFailed = "Écriture des formats impossible";
inline constexpr std::string_view invalidImage = "Image clipboard invalide ou trop grande";
inline constexpr std::string_view filesWriteFailed = "Écriture fichiers impossible";
inline constexpr std::string_view unknownCommand = "Commande clipboard inconnue";

inline constexpr std::string_view pasteNotPermitted = "Renommage : autorise Tavel Bridge dans Accessibilité "
                                                      "et Surveillance de l’entrée, puis réactive l’option.";

inline constexpr std::string_view panelTitle = "Nommer avant de coller";
inline constexpr std::string_view panelCancel = "Annuler";
inline constexpr std::string_view panelConfirm = "Coller";
inline constexpr std::string_view invalidName = "Nom invalide ou réservé. L’extension est conservée.";

inline std::string extensionKept(std::string_view ext) {
    return "Extension conservée : ." + std::string(ext);
}

inline constexpr std::string_view selectionTooLarge =
    "Sélection de fichiers trop grande (10 000 éléments / 2 Mio de chemins)";
inline constexpr std::string_view textTooLarge = "Texte presse-papiers ignoré (>4 Mio)";
inline constexpr std::string_view imageIgnored = "Image ignorée (limite 128 Mio / 32 mégapixels)";

/// `offeredTypes`: the offered types of known formats, separated by ", ".
inline std::string noReadableFormat(const std::string& offeredTypes) {
    return "Presse-papiers : formats annoncés mais aucune représentation lisible/valide (" + offeredTypes +
           ").";
}

inline std::string formatsNotPrepared(const Error& error) {
    const Error shown = homePlatformError(error);
    return "Presse-papiers : échec de préparation des formats (" + shown.domain() + ":" +
           std::to_string(shown.code()) + ").";
}

/// For the system's log, which other people may read. So it names no file: a file's name begins like the text
/// on the clipboard.
inline std::string fileNotPrepared(const Error& error) {
    const Error shown = homePlatformError(error);
    const auto* const fileError = dynamic_cast<const FileError*>(&error);
    const std::string reason = fileError != nullptr ? fileError->reason() : error.description();
    return "Tavel : préparation du fichier impossible (" + shown.domain() + ":" +
           std::to_string(shown.code()) + ", " + reason + ")";
}

} // namespace tavel::messages
