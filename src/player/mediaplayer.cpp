#include "player/mediaplayer.h"

MediaPlayer::MediaPlayer(QObject *parent) : QObject(parent) {}
