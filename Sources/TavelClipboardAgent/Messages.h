#pragma once

#include <string_view>

/// Every text that the agent sends for people to read: the reasons of failed commands and the warnings.
namespace tavel::messages {

inline constexpr std::string_view invalidText = "Texte clipboard invalide";
inline constexpr std::string_view textWriteFailed = "Écriture NSPasteboard impossible";
inline constexpr std::string_view invalidHistoryImage = "Image historique invalide";
inline constexpr std::string_view changedDuringTransfer =
    "Le presse-papiers local a changé pendant le transfert";
inline constexpr std::string_view invalidFiles = "Fichiers clipboard invalides";
inline constexpr std::string_view unknownFormat = "Format clipboard inconnu";
inline constexpr std::string_view filesWriteFailed = "Écriture fichiers impossible";
inline constexpr std::string_view unknownCommand = "Commande clipboard inconnue";

inline constexpr std::string_view pasteNotPermitted = "Renommage : autorise Tavel Bridge dans Accessibilité "
                                                      "et Surveillance de l’entrée, puis réactive l’option.";

inline constexpr std::string_view selectionTooLarge =
    "Sélection de fichiers trop grande (10 000 éléments / 2 Mio de chemins)";
inline constexpr std::string_view textTooLarge = "Texte presse-papiers ignoré (>4 Mio)";

} // namespace tavel::messages
